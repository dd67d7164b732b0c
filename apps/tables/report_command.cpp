#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "../common/app_error.h"
#include "../common/files.h"
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

/// The sum of a file as sha256sum -c reads it.
std::string sumLine(const std::filesystem::path& folder, const ReportedTable& table, unsigned side,
                    bool packed) {
    const std::string name = tableFileName(table.id, side);
    const FileRecord& file = table.record.files[side];
    if (!packed) return file.sha256 + "  " + name + "\n";
    if (!file.packed) fail(packedName(folder / name), "no such file");
    return file.packed->sha256 + "  " + packedName(name).string() + "\n";
}

std::string sumsOf(const std::filesystem::path& folder, const TableReport& report, bool packed) {
    std::string text;
    for (const ReportedTable& table : report.tables) {
        for (unsigned side = 0; side < table.record.files.size(); ++side) {
            text += sumLine(folder, table, side, packed);
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
