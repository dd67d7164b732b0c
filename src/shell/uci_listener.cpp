#include "shell/uci_listener.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "search/score.h"
#include "shell/base/console.h"
#include "shell/principal_variation.h"

namespace brivok {

namespace {

/// Centiseconds after which the current move is reported.
constexpr std::uint32_t CurrentMoveDelay = 500;
constexpr std::uint32_t AnalysisMoveDelay = 100;

std::uint32_t millisecondsOf(const SearchProgress& progress) { return progress.elapsed * 10; }

unsigned nodesPerSecond(const SearchProgress& progress) {
    const std::uint32_t milliseconds = millisecondsOf(progress);
    if (progress.stats.nodes == 0 || milliseconds == 0) return 1;
    const double rate = progress.stats.nodes / ((milliseconds + 1.0) * 0.001);
    return static_cast<unsigned>(std::min(rate, double{UINT32_MAX}));
}

unsigned hashfull(const SearchProgress& progress) { return progress.table.fillPermille(); }

std::string scoreText(int score) {
    if (score > MateBound) return "mate " + std::to_string(movesToMate(score)) + " ";
    if (score < -MateBound) {
        return "mate " + std::to_string(-((MateScore - std::abs(score)) / 2)) + " ";
    }
    return "cp " + std::to_string(score) + " ";
}

/// Endgame table hits since the program started; empty if there are none.
std::string tableHits(const SearchProgress& progress, const char* before, const char* behind) {
    if (progress.tableHits == 0) return "";
    return before + ("tbhits " + std::to_string(progress.tableHits)) + behind;
}

void printUciInfo(Application& app, const SearchProgress& progress, int score, SearchEvent event) {
    std::string line = renderPv(progress, PvStyle::Coordinate);
    std::string scoreField = scoreText(score);
    const bool failed = event == SearchEvent::FailedHigh || event == SearchEvent::FailedLow;
    if (failed && std::abs(score) <= MateBound) {
        line = moveToCoordinate(progress.board.pvTable[1][1]);
        scoreField += event == SearchEvent::FailedHigh ? "lowerbound " : "upperbound ";
    }
    // The line has hashfull twice; both are the same.
    Print(app,
          "info depth %d seldepth %d time %u hashfull %u score %snodes %u nps %u hashfull %u %spv "
          "%s\n",
          progress.iteration, progress.selDepth, millisecondsOf(progress), hashfull(progress),
          scoreField.c_str(), progress.stats.nodes, nodesPerSecond(progress), hashfull(progress),
          tableHits(progress, "", " ").c_str(), line.c_str());
}

void printUciRootMove(Application& app, const SearchProgress& progress, bool firstOfPass) {
    const int number = progress.rootMovesTotal - progress.rootMovesLeft;
    const std::string move(progress.currentMoveText);
    if (firstOfPass) {
        Print(app,
              "info currmovenumber %d currmove %s depth %d seldepth %d time %u nodes %u nps %u "
              "hashfull %u %s\n",
              number, move.c_str(), progress.iteration, progress.selDepth, millisecondsOf(progress),
              progress.stats.nodes, nodesPerSecond(progress), hashfull(progress),
              tableHits(progress, "", "").c_str());
    } else {
        Print(app, "info currmove %s currmovenumber %d nodes %u hashfull %u %s\n", move.c_str(),
              number, progress.stats.nodes, hashfull(progress),
              tableHits(progress, " ", "").c_str());
    }
}

}  // namespace

void UciListener::onIteration(const SearchProgress& progress, int score, SearchEvent event) {
    printUciInfo(app, progress, score, event);
}

void UciListener::onManyNodes(const SearchProgress& progress) {
    Print(app, "info nodes %u nps %u hashfull %u %s\n", progress.stats.nodes,
          nodesPerSecond(progress), hashfull(progress), tableHits(progress, " ", "").c_str());
}

void UciListener::onRootMove(const SearchProgress& progress, bool firstOfPass) {
    const bool analysing = progress.mode == SearchMode::Analysing;
    if (progress.elapsed < (analysing ? AnalysisMoveDelay : CurrentMoveDelay)) return;
    printUciRootMove(app, progress, firstOfPass);
}

void UciListener::onStatistics(const SearchStats& /*stats*/) {}

}  // namespace brivok
