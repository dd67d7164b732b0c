#include "report_charts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "report_text.h"

namespace brivok::tables {
namespace {

constexpr double Width = 720;
constexpr double Margin = 28;
constexpr double BaseLine = 4.5;  ///< from the middle of a line of text

double ratio(std::uint64_t part, std::uint64_t whole) {
    return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

/// Squares with their meanings, in a row.
void drawKey(Svg& svg, double y, std::initializer_list<std::array<std::string_view, 2>> entries) {
    double x = Margin;
    for (const auto& [itsClass, words] : entries) {
        svg.rect(x, y, 12, 12, itsClass);
        svg.text(x + 18, y + 10.5, words, "note");
        x += 44 + 6.2 * static_cast<double>(words.size());
    }
}

struct LongestBar {
    std::string_view signature;
    unsigned moves = 0;
    unsigned winner = 0;
};

/// Bars for the counts by moves, from 1 on, with `step` for each. Heights are square roots, so that
/// the few longest mates are visible.
std::string areaPath(const std::vector<std::uint64_t>& counts, double x, double bottom, double step,
                     double height, std::uint64_t most) {
    std::string data = "M" + coordinate(x) + " " + coordinate(bottom);
    for (std::size_t moves = 1; moves < counts.size(); ++moves) {
        data += "V" + coordinate(bottom - height * std::sqrt(ratio(counts[moves], most))) + "h" +
                coordinate(step);
    }
    return data + "V" + coordinate(bottom) + "z";
}

void drawDistances(Svg& svg, const ReportedTable& table, double x, double y, double width) {
    constexpr double Height = 96;
    const double bottom = y + 24 + Height;
    const auto& files = table.record.files;
    std::uint64_t most = 1;
    std::size_t longest = 1;
    for (const FileRecord& file : files) {
        for (const std::uint64_t count : file.winsIn) most = std::max(most, count);
        longest = std::max(longest, file.winsIn.size());
    }
    const double step = width / static_cast<double>(longest - 1);
    svg.text(x, y + 12, table.record.signature, "code");
    if (!files[0].winsIn.empty()) {
        svg.path(areaPath(files[0].winsIn, x, bottom, step, Height, most), "win");
    }
    if (files.size() == 2 && !files[1].winsIn.empty()) {
        svg.path(areaPath(files[1].winsIn, x, bottom, step, Height, most), "outline");
    }
    svg.line(x, bottom, x + width, bottom, "grid");
    svg.text(x, bottom + 16, "1", "note");
    svg.text(x + width, bottom + 16, std::to_string(longest - 1), "note", Anchor::End);
}

/// White's wins, draws and Black's wins of a file for one side to move.
void drawResults(Svg& svg, const FileRecord& file, bool whiteMoves, double x, double y,
                 double width) {
    constexpr double Height = 9;
    const std::array<std::pair<std::string_view, std::uint64_t>, 3> parts = {
        {{"win", whiteMoves ? file.wins : file.losses},
         {"draw", file.draws},
         {"loss", whiteMoves ? file.losses : file.wins}}};
    for (const auto& [itsClass, count] : parts) {
        const double length = width * ratio(count, file.legal());
        if (length > 0) svg.rect(x, y, length, Height, itsClass);
        x += length;
    }
}

std::string upperCase(std::string_view text) {
    std::string result;
    for (const char letter : text) {
        result += static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    return result;
}

}  // namespace

Svg longestMatesChart(const TableReport& report) {
    constexpr std::size_t Most = 24;
    constexpr double Left = 100;
    constexpr double Step = 20;
    std::vector<LongestBar> bars;
    for (const ReportedTable& table : report.tables) {
        for (unsigned winner = 0; winner < table.record.files.size(); ++winner) {
            if (const unsigned moves = table.longestMateBy(winner); moves > 0) {
                bars.push_back({table.record.signature, moves, winner});
            }
        }
    }
    std::ranges::stable_sort(bars, std::ranges::greater{}, &LongestBar::moves);
    bars.resize(std::min(bars.size(), Most));

    const double bottom = 64 + Step * static_cast<double>(bars.size());
    Svg svg(Width, bottom + 56, "The tables with the longest mates");
    svg.text(Margin, 40, "The longest mates, in moves", "title");
    const double scale = bars.empty() ? 0 : (Width - Left - 80) / bars.front().moves;
    double y = 58;
    for (const LongestBar& bar : bars) {
        svg.text(Left - 10, y + Step / 2 + BaseLine, bar.signature, "code", Anchor::End);
        svg.rect(Left, y + 3, bar.moves * scale, Step - 6, bar.winner == 0 ? "win" : "loss");
        svg.text(Left + bar.moves * scale + 7, y + Step / 2 + BaseLine, std::to_string(bar.moves),
                 "note");
        y += Step;
    }
    svg.line(Left - 0.5, 56, Left - 0.5, bottom, "grid");
    drawKey(svg, bottom + 18, {{"win", "White mates"}, {"loss", "Black mates"}});
    return svg;
}

std::optional<Svg> pairsChart(const TableReport& report) {
    constexpr std::string_view Strongest = "qrbnp";
    constexpr std::array<std::string_view, 6> Opponents = {"", "p", "n", "b", "r", "q"};
    constexpr std::array<std::string_view, 6> Heads = {"K", "KP", "KN", "KB", "KR", "KQ"};
    constexpr double Left = 84;
    constexpr double Top = 98;
    constexpr double CellWidth = 100;
    constexpr double CellHeight = 26;
    constexpr std::size_t Fewest = 20;

    Svg svg(Width, Top + 15 * CellHeight + 64, "Two men against at most one: longest mates");
    svg.text(Margin, 40, "Two men against at most one: White's longest mate, in moves", "title");
    svg.text(Margin, 60,
             "The deeper the blue, the more of the positions with White to move are won.", "note");
    for (std::size_t column = 0; column < Heads.size(); ++column) {
        svg.text(Left + (static_cast<double>(column) + 0.5) * CellWidth, Top - 8, Heads[column],
                 "code", Anchor::Middle);
    }
    std::size_t cells = 0;
    double y = Top;
    for (std::size_t i = 0; i < Strongest.size(); ++i) {
        for (std::size_t j = i; j < Strongest.size(); ++j, y += CellHeight) {
            const std::string pair = {'k', Strongest[i], Strongest[j]};
            svg.text(Left - 12, y + CellHeight / 2 + BaseLine, upperCase(pair), "code",
                     Anchor::End);
            for (std::size_t column = 0; column < Opponents.size(); ++column) {
                const std::string signature = pair + "k" + std::string(Opponents[column]);
                const auto table = std::ranges::find_if(report.tables, [&](const auto& each) {
                    return each.record.signature == signature;
                });
                if (table == report.tables.end()) continue;
                ++cells;
                const FileRecord& file = table->record.files.front();
                const unsigned moves = table->longestMateBy(0);
                const double x = Left + static_cast<double>(column) * CellWidth;
                svg.rect(x + 1, y + 1, CellWidth - 2, CellHeight - 2, "win",
                         0.04 + 0.6 * ratio(file.wins, file.legal()));
                svg.text(x + CellWidth / 2, y + CellHeight / 2 + BaseLine,
                         moves == 0 ? "no mate" : std::to_string(moves), "", Anchor::Middle);
            }
        }
    }
    double x = Margin;
    y += 22;
    for (const unsigned share : {0U, 25U, 50U, 75U, 100U}) {
        svg.rect(x, y, 22, 14, "win", 0.04 + 0.006 * share);
        svg.text(x + 28, y + 11.5, std::to_string(share) + " % won", "note");
        x += 110;
    }
    if (cells < Fewest) return std::nullopt;
    return svg;
}

Svg distancesChart(const std::vector<ReportedGroup>& groups) {
    constexpr std::size_t Columns = 3;
    constexpr double Gap = 30;
    constexpr double PanelWidth = (Width - 2 * Margin - (Columns - 1) * Gap) / Columns;
    constexpr double PanelHeight = 156;
    std::vector<const ReportedTable*> shown;
    for (const ReportedGroup& group : groups) {
        const auto longest = [](const ReportedTable* table) {
            return std::max(table->longestMateBy(0), table->longestMateBy(1));
        };
        const auto* table = *std::ranges::max_element(group.tables, {}, longest);
        const bool hasWins = std::ranges::any_of(
            table->record.files, [](const FileRecord& file) { return file.wins != 0; });
        if (hasWins) shown.push_back(table);
    }
    const std::size_t rows = (shown.size() + Columns - 1) / Columns;
    const double bottom = 76 + PanelHeight * static_cast<double>(rows);
    Svg svg(Width, bottom + 40, "How many positions are won in how many moves");
    svg.text(Margin, 40, "How many positions are won in how many moves", "title");
    svg.text(Margin, 60,
             "The table of each group with the longest mate. Heights grow with the square root of "
             "the number.",
             "note");
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const auto column = static_cast<double>(i % Columns);
        const std::size_t row = i / Columns;
        drawDistances(svg, *shown[i], Margin + column * (PanelWidth + Gap),
                      80 + static_cast<double>(row) * PanelHeight, PanelWidth);
    }
    drawKey(svg, bottom + 8, {{"win", "White to move and win"}, {"loss", "Black to move and win"}});
    return svg;
}

Svg resultsChart(const ReportedGroup& group) {
    constexpr double Left = 100;
    constexpr double Step = 30;
    constexpr double BarStep = 11;
    constexpr double BarWidth = 480;
    constexpr double WhiteColumn = Width - Margin - 52;
    const double bottom = 84 + Step * static_cast<double>(group.tables.size());
    Svg svg(Width, bottom + 48, group.heading + ": wins, draws and losses");
    svg.text(Margin, 40, group.heading, "title");
    svg.text(Margin, 62, "Upper bar: White to move. Lower bar: Black to move.", "note");
    svg.text(Width - Margin, 40, "longest mate by", "note", Anchor::End);
    svg.text(WhiteColumn, 62, "White", "note", Anchor::End);
    svg.text(Width - Margin, 62, "Black", "note", Anchor::End);
    double y = 80;
    for (const ReportedTable* table : group.tables) {
        const double text = y + BarStep + BaseLine;
        svg.text(Left - 10, text, table->record.signature, "code", Anchor::End);
        double barY = y + (table->sameForBoth() ? 1 + BarStep / 2 : 1);
        bool whiteMoves = true;
        for (const FileRecord& file : table->record.files) {
            drawResults(svg, file, whiteMoves, Left, barY, BarWidth);
            barY += BarStep;
            whiteMoves = false;
        }
        for (const unsigned side : {0U, 1U}) {
            const unsigned moves = table->longestMateBy(side);
            svg.text(side == 0 ? WhiteColumn : Width - Margin, text,
                     moves == 0 ? "none" : std::to_string(moves), "note", Anchor::End);
        }
        y += Step;
    }
    drawKey(svg, bottom + 16, {{"win", "White wins"}, {"draw", "drawn"}, {"loss", "Black wins"}});
    return svg;
}

}  // namespace brivok::tables
