#include "report_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "report_charts.h"
#include "report_text.h"
#include "table_store.h"

namespace brivok::tables {
namespace {

using Column = ReportPage::Column;
using Cells = ReportPage::Cells;
constexpr auto Left = ReportPage::Align::Left;

constexpr std::string_view OverviewHeading = "Overview";
constexpr std::string_view NotesHeading = "How to read this page";

/// Sums over tables.
struct Totals {
    std::uint64_t tables = 0;
    std::uint64_t files = 0;
    std::uint64_t entries = 0;
    std::uint64_t bytes = 0;
    std::uint64_t packedBytes = 0;
    std::uint64_t packedTables = 0;
    double processorSeconds = 0;
    std::uint64_t measured = 0;  ///< tables whose making was
    std::uint64_t peakBytes = 0;
    std::uint64_t recorded = 0;

    void add(const ReportedTable& table) {
        ++tables;
        recorded += table.recorded ? 1 : 0;
        bytes += table.bytes();
        for (unsigned side = 0; side < table.record.files.size(); ++side) {
            files += partsOf(table.id, side);
            entries += table.record.files[side].entries;
        }
        if (const auto packed = table.packedBytes()) {
            packedBytes += *packed;
            ++packedTables;
        }
        if (const auto& making = table.record.making) {
            processorSeconds += making->processorSeconds;
            peakBytes = std::max(peakBytes, making->peakBytes);
            ++measured;
        }
    }

    /// Sums of only some tables would mislead.
    [[nodiscard]] std::string packedText() const {
        return packedTables == tables ? sizeText(packedBytes) : "";
    }
    [[nodiscard]] std::string processorText() const {
        return measured == tables ? durationText(processorSeconds) : "";
    }
};

template <typename Tables>
Totals totalsOf(const Tables& tables) {
    Totals totals;
    for (const auto& table : tables) {
        if constexpr (std::is_pointer_v<typename Tables::value_type>) {
            totals.add(*table);
        } else {
            totals.add(table);
        }
    }
    return totals;
}

std::string numbersOfMen(const TableReport& report) {
    const auto men = [](const ReportedTable& table) { return table.record.signature.size(); };
    const auto [least, most] = std::ranges::minmax(report.tables, {}, men);
    const std::string from = numberWord(men(least));
    return men(least) == men(most) ? from : from + " to " + numberWord(men(most));
}

const ReportedTable& longestOf(const std::vector<const ReportedTable*>& tables) {
    return **std::ranges::max_element(tables, {}, [](const ReportedTable* table) {
        return std::max(table->longestMateBy(0), table->longestMateBy(1));
    });
}

/// Writes the grid without columns that have nothing to tell.
void writeGrid(std::vector<Column> columns, std::vector<Cells> rows, ReportPage& page) {
    for (std::size_t i = columns.size(); i-- > 0;) {
        const bool isEmpty =
            std::ranges::all_of(rows, [i](const Cells& row) { return row[i].empty(); });
        if (!isEmpty) continue;
        const auto place = static_cast<std::ptrdiff_t>(i);
        columns.erase(columns.begin() + place);
        for (Cells& row : rows) row.erase(row.begin() + place);
    }
    page.grid(columns, rows);
}

std::string sum(const Totals& totals, const ReportPage& page) {
    std::string text = countText(totals.tables, "table") + " in " +
                       countText(totals.files, "file") + (totals.tables == 1 ? " has " : " have ") +
                       grouped(totals.entries) + " entries, " + sizeText(totals.bytes) +
                       " in plain files";
    if (!totals.packedText().empty()) text += " and " + totals.packedText() + " in packed ones";
    text += ".";
    if (totals.measured == totals.tables) {
        text += " Making them took " + durationText(totals.processorSeconds) +
                " of processor time and up to " + sizeText(totals.peakBytes) + " of memory.";
    }
    return page.plain(text);
}

/// The name of a table, with a way to its longest mates if there are any.
std::string nameOf(const ReportedTable& table, const ReportPage& page) {
    const std::string& signature = table.record.signature;
    return table.mates.empty() ? page.code(signature) : page.tableLink(signature);
}

void writeOverview(const TableReport& report, const std::vector<ReportedGroup>& groups,
                   ReportPage& page) {
    page.section(OverviewHeading);
    page.paragraph(sum(totalsOf(report.tables), page));
    std::vector<Cells> rows;
    const auto addRow = [&](std::string name, const Totals& totals, std::string longest) {
        rows.push_back({std::move(name), grouped(totals.tables), grouped(totals.entries),
                        sizeText(totals.bytes), totals.packedText(), totals.processorText(),
                        std::move(longest)});
    };
    for (const ReportedGroup& group : groups) {
        const ReportedTable& longest = longestOf(group.tables);
        const unsigned moves = std::max(longest.longestMateBy(0), longest.longestMateBy(1));
        addRow(page.link(group.heading), totalsOf(group.tables),
               moves == 0 ? "none" : std::to_string(moves) + " in " + nameOf(longest, page));
    }
    writeGrid({{"Group", Left},
               {"Tables"},
               {"Entries"},
               {"Plain"},
               {"Packed"},
               {"Processor time"},
               {"Longest mate", Left}},
              rows, page);
}

void writeNotes(const TableReport& report, ReportPage& page) {
    page.section(NotesHeading);
    page.paragraph(
        page.plain("The name of a table lists the men of one side, then those of the other: ") +
        page.code("krbkr") +
        page.plain(" is king, rook and bishop against king and rook. Here the side that is named "
                   "first is White. Headings count the men besides the kings."));
    page.paragraph(page.plain(
        "A file has an entry for every position with one side to move. Wins, draws and losses are "
        "those of the side to move; shares are of the entries with a value. Entries without one "
        "are illegal positions. Mates count in moves, with the best play of both sides and "
        "without regard to the fifty-move rule: a win in 1 mates at once. Where both sides have "
        "the same men, one file serves both."));
    page.paragraph(page.plain(
        "Below each group the tables open to positions from which the mate takes longest, with a "
        "line to the mate in which both sides always play a best move. Seconds tell how long it "
        "took to make a table, by the clock and in processor time."));
    const Totals totals = totalsOf(report.tables);
    if (const std::uint64_t without = totals.tables - totals.recorded; without != 0) {
        std::string text = without == totals.tables ? "No table" : countText(without, "table");
        text += without == totals.tables ? " here has a"
                : without == 1           ? " here has no"
                                         : " here have no";
        page.paragraph(page.plain(
            text +
            " record of its making: the files were read for this report, and times are missing."));
    }
    if (!report.incomplete.empty()) {
        std::string text = page.plain("Left out, since a file is missing:");
        for (const std::string& signature : report.incomplete) text += " " + page.code(signature);
        page.paragraph(text + page.plain("."));
    }
}

std::string countAndShare(std::uint64_t count, const FileRecord& file, const ReportPage& page) {
    if (count == 0) return "0";
    return page.plain(grouped(count) + " (" + shareOf(count, file.legal()) + ")");
}

std::string movesText(const ReportedMate* mate, const char* none) {
    return mate == nullptr ? none : std::to_string(mate->mate.moves);
}

std::vector<Cells> rowsOf(const ReportedTable& table, const ReportPage& page) {
    std::vector<Cells> rows;
    for (unsigned side = 0; side < table.record.files.size(); ++side) {
        const FileRecord& file = table.record.files[side];
        const std::string mover = table.sameForBoth() ? "either" : side == 0 ? "White" : "Black";
        const auto& making = table.record.making;
        const bool timed = side == 0 && making;
        rows.push_back({side == 0 ? nameOf(table, page) : "", mover, grouped(file.entries),
                        countAndShare(file.wins, file, page), countAndShare(file.draws, file, page),
                        countAndShare(file.losses, file, page),
                        movesText(table.longestMate(side, true), ""),
                        movesText(table.longestMate(side, false), file.losses == 0 ? "" : "0"),
                        sizeText(file.bytes()), file.packed ? sizeText(file.packed->bytes) : "",
                        timed ? secondsText(making->seconds) : "",
                        timed ? secondsText(making->processorSeconds) : ""});
    }
    return rows;
}

std::string headingOf(const ReportedTable& table, const ReportedMate& mate) {
    const std::string mover = mate.side == 0 ? "White" : "Black";
    const std::string side = table.sameForBoth() ? "White or Black" : mover;
    return side + " to move " + (mate.won ? "mates in " : "is mated in ") +
           countText(mate.mate.moves, "move");
}

std::string noteOf(const ReportedMate& mate) {
    std::string note;
    if (mate.withoutValue != 0) {
        note = "An entry of one byte cannot say so: " + countText(mate.withoutValue, "position") +
               (mate.withoutValue == 1 ? " has" : " have") + " no value in the file.";
    }
    if (!mate.gap.empty())
        note += (note.empty() ? "" : " ") + ("The line ends here: " + mate.gap) + ".";
    return note;
}

void writeGroup(const ReportedGroup& group, ReportPage& page) {
    std::vector<Cells> rows;
    for (const ReportedTable* table : group.tables) {
        const std::vector<Cells> its = rowsOf(*table, page);
        rows.insert(rows.end(), its.begin(), its.end());
    }
    writeGrid({{"Table", Left},
               {"To move", Left},
               {"Entries"},
               {"Wins"},
               {"Draws"},
               {"Losses"},
               {"Longest win"},
               {"Longest loss"},
               {"Plain"},
               {"Packed"},
               {"Seconds"},
               {"Processor s"}},
              rows, page);
    for (const ReportedTable* table : group.tables) {
        std::vector<ShownPosition> positions;
        for (const ReportedMate& mate : table->mates) {
            positions.push_back({.heading = headingOf(*table, mate),
                                 .fen = mate.mate.fen,
                                 .line = mate.line,
                                 .note = noteOf(mate)});
        }
        if (!positions.empty()) {
            page.details(table->record.signature, menText(table->record.signature), positions);
        }
    }
}

}  // namespace

std::string titleOf(const TableReport& report) {
    return "Report on the endgame tables of " + numbersOfMen(report) + " men";
}

std::vector<NamedPicture> picturesOf(const TableReport& report) {
    const std::vector<ReportedGroup> groups = groupsOf(report);
    std::vector<NamedPicture> pictures;
    pictures.push_back({"longest-mates.svg", longestMatesChart(report)});
    if (auto pairs = pairsChart(report)) pictures.push_back({"pairs.svg", std::move(*pairs)});
    pictures.push_back({"distances.svg", distancesChart(groups)});
    for (const ReportedGroup& group : groups) {
        pictures.push_back({group.shortName + ".svg", resultsChart(group)});
    }
    return pictures;
}

void writeReport(const TableReport& report, const std::vector<NamedPicture>& pictures,
                 ReportPage& page) {
    const std::vector<ReportedGroup> groups = groupsOf(report);
    writeOverview(report, groups, page);
    // The last pictures are those of the groups.
    auto picture = pictures.begin();
    const auto ofGroups = pictures.end() - static_cast<std::ptrdiff_t>(groups.size());
    for (; picture != ofGroups; ++picture) page.picture(picture->svg, picture->fileName);
    writeNotes(report, page);
    for (const ReportedGroup& group : groups) {
        page.section(group.heading);
        page.picture(picture->svg, picture->fileName);
        ++picture;
        writeGroup(group, page);
    }
}

}  // namespace brivok::tables
