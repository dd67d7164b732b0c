#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "board/coordinate.h"
#include "hash/search_stats.h"
#include "search/searcher.h"
#include "shell/base/console.h"

namespace brivok {

namespace {

/// Nothing is printed before this iteration.
constexpr int FirstPrintedIteration = 3;

/// The moves in hand are told after this time, in centiseconds.
constexpr std::uint32_t CurrentMoveDelay = 500;
constexpr std::uint32_t AnalysisMoveDelay = 100;

/// A periodic line comes each time these bits of the node count are all zero.
constexpr std::uint32_t PeriodicMask = (1U << 20U) - 1;

bool speaksUci() { return theApplication->currentProtocol == Protocol::Uci; }

unsigned nodesPerSecond(std::uint32_t milliseconds) {
    if (searchStats.nodes == 0 || milliseconds == 0) return 1;
    const double rate = searchStats.nodes / ((milliseconds + 1.0) * 0.001);
    return static_cast<unsigned>(std::min(rate, double{UINT32_MAX}));
}

unsigned long nodeCount() { return searchStats.nodes; }

std::string scoreText(int score) {
    if (score > MateBound) return "mate " + std::to_string((MateScore + 1 - score) / 2) + " ";
    if (score < -MateBound) {
        return "mate " + std::to_string(-((MateScore - std::abs(score)) / 2)) + " ";
    }
    return "cp " + std::to_string(score) + " ";
}

}  // namespace

void Searcher::printIteration(int score, ScoreBound bound) {
    if (iteration >= FirstPrintedIteration && speaksUci()) printUciInfo(score, bound);
}

void Searcher::printUciInfo(int score, ScoreBound bound) {
    std::string line = renderPv();
    std::string scoreField = scoreText(score);
    if (std::abs(score) <= MateBound && bound != ScoreBound::None) {
        line = moveToCoordinate(board->pvTable[1][1]);
        scoreField += bound == ScoreBound::Lower ? "lowerbound " : "upperbound ";
    }
    const std::uint32_t ms = elapsed() * 10;
    const auto hashfull = static_cast<unsigned>(transpositionTable.fillPermille());
    Print(*theApplication,
          "info depth %d seldepth %d time %u hashfull %u score %snodes %lu nps %u hashfull %u pv "
          "%s\n",
          iteration, selDepth, ms, hashfull, scoreField.c_str(), nodeCount(), nodesPerSecond(ms),
          hashfull, line.c_str());
}

void Searcher::printPeriodic() {
    if ((searchStats.nodes & PeriodicMask) != 0 || searchMode != SearchMode::Analysing) return;
    if (iteration < FirstPrintedIteration || !speaksUci()) return;
    Print(*theApplication, "info nodes %lu nps %u hashfull %u \n", nodeCount(),
          nodesPerSecond(elapsed() * 10), static_cast<unsigned>(transpositionTable.fillPermille()));
}

void Searcher::printRootMove(bool firstOfPass) {
    if (iteration < FirstPrintedIteration || !speaksUci()) return;
    const std::uint32_t used = elapsed();
    const bool analysing = searchMode == SearchMode::Analysing;
    if (used < (analysing ? AnalysisMoveDelay : CurrentMoveDelay)) return;

    const int number = rootMovesTotal - rootMovesLeft;
    const auto hashfull = static_cast<unsigned>(transpositionTable.fillPermille());
    if (firstOfPass) {
        Print(*theApplication,
              "info currmovenumber %d currmove %s depth %d seldepth %d time %u nodes %lu nps %u "
              "hashfull %u \n",
              number, currentMoveText.c_str(), iteration, selDepth, used * 10, nodeCount(),
              nodesPerSecond(used * 10), hashfull);
    } else {
        Print(*theApplication, "info currmove %s currmovenumber %d nodes %lu hashfull %u \n",
              currentMoveText.c_str(), number, nodeCount(), hashfull);
    }
}

std::string Searcher::renderPv() {
    // The line is played on the one board: that leaves its moves in the undo records, where a later
    // null move finds them, so printing is part of what the search does.
    Board& b = *board;
    const std::uint32_t plyBefore = b.ply;
    std::string text;
    const auto play = [&](Move move) {
        text += moveToCoordinate(move) + " ";
        b.makeMove(move);
    };
    for (int c = 1; c < b.pvLength[1]; ++c) play(b.pvTable[1][c]);

    // Continued from the transposition table
    for (int added = 0; added < iteration && b.ply < UndoRecords - 1; ++added) {
        const Move move = transpositionTable.bestMove(b);
        if (move == NoMove) break;
        b.makeMove(move);
        if (b.moverInCheck()) {
            b.unmakeMove();
            break;
        }
        text += moveToCoordinate(move) + " ";
    }
    while (b.ply > plyBefore) b.unmakeMove();
    return text;
}

}  // namespace brivok
