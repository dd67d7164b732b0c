#pragma once

#include <string>
#include <vector>

#include "report_page.h"
#include "svg.h"
#include "table_report.h"

namespace brivok::tables {

struct NamedPicture {
    std::string fileName;
    Svg svg;
};

/// The title says which tables the report is on.
[[nodiscard]] std::string titleOf(const TableReport& report);

/// The charts of a report in the order of the page, with names for files.
[[nodiscard]] std::vector<NamedPicture> picturesOf(const TableReport& report);

/// Writes all that follows the title.
void writeReport(const TableReport& report, const std::vector<NamedPicture>& pictures,
                 ReportPage& page);

}  // namespace brivok::tables
