#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "../common/app_error.h"
#include "../common/files.h"
#include "../common/sha256.h"
#include "commands.h"
#include "report_lines.h"
#include "report_page.h"
#include "report_text.h"
#include "report_writer.h"
#include "table_report.h"
#include "task.h"

namespace brivok::tables {
namespace {

constexpr const char* PageName = "tables-report";
constexpr const char* PictureFolder = "tables";

void write(const std::filesystem::path& path, const std::string& text) {
    NewFile file(path);
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.finish();
}

/// The sums of the files for a side to move as sha256sum -c reads them.
std::string sumLines(const std::filesystem::path& folder, const ReportedTable& table, unsigned side,
                     bool packed) {
    std::string lines;
    const FileRecord& file = table.record.files[side];
    for (unsigned part = 0; part < partsOf(table.id, side); ++part) {
        std::filesystem::path name = tableFileName(table.id, side, part);
        if (packed) name = packedName(name);
        if (packed && !file.packed) fail(folder / name, "no such file");
        const std::string recorded = packed ? file.packed->sha256 : file.sha256;
        // Sums of parts are not recorded.
        const std::string sum = isSplit(table.id) ? sha256OfFile(folder / name) : recorded;
        lines += sum + "  " + name.string() + "\n";
    }
    return lines;
}

std::string sumsOf(const std::filesystem::path& folder, const TableReport& report, bool packed) {
    std::string text;
    for (const ReportedTable& table : report.tables) {
        for (unsigned side = 0; side < table.record.files.size(); ++side) {
            text += sumLines(folder, table, side, packed);
        }
    }
    return text;
}

}  // namespace

void reportTables(const ReportOptions& options) {
    Task task("report");
    TableReport report =
        reportOn(options.folder, [&](const std::string& table) { task.show(table); });
    if (!options.sums.empty()) {
        const std::string sums = sumsOf(options.folder, report, options.sums == "packed");
        std::fputs(sums.c_str(), stdout);
        return;
    }
    addLines(report, options.folder,
             [&](const std::string& table) { task.show("lines of " + table); });
    const std::vector<NamedPicture> pictures = picturesOf(report);
    const std::string title = titleOf(report);
    MarkdownPage markdown(title, PictureFolder);
    HtmlPage html(title);
    writeReport(report, pictures, markdown);
    writeReport(report, pictures, html);

    const std::filesystem::path page = options.output / PageName;
    std::filesystem::create_directories(options.output / PictureFolder);
    for (const NamedPicture& picture : pictures) {
        write(options.output / PictureFolder / picture.fileName, picture.svg.file());
    }
    write(std::filesystem::path(page).concat(".md"), markdown.text());
    write(std::filesystem::path(page).concat(".html"), html.text());
    task.report(countText(report.tables.size(), "table") + ", " + page.string() + ".md and .html");
}

}  // namespace brivok::tables
