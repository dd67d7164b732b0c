#pragma once

#include <optional>
#include <vector>

#include "svg.h"
#include "table_report.h"

/// The pictures of a report.
namespace brivok::tables {

/// Bars for the tables with the longest mates.
[[nodiscard]] Svg longestMatesChart(const TableReport& report);

/// Tables of two men against at most one, by both: the longest mate and how often White wins. None
/// if there are few such tables.
[[nodiscard]] std::optional<Svg> pairsChart(const TableReport& report);

/// How many positions are won in how many moves, in the table of each group with the longest mate.
[[nodiscard]] Svg distancesChart(const std::vector<ReportedGroup>& groups);

/// Shares of wins, draws and losses in the tables of a group, with either side to move.
[[nodiscard]] Svg resultsChart(const ReportedGroup& group);

}  // namespace brivok::tables
