#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "table_report.h"

namespace brivok::tables {

/// Finds the lines to the longest mates in the tables of the folder, which are read in blocks.
/// Throws AppError, also if a record tells of another distance than its table.
void addLines(TableReport& report, const std::filesystem::path& folder,
              const std::function<void(const std::string&)>& progress);

}  // namespace brivok::tables
