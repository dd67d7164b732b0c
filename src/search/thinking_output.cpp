#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "board/coordinate.h"
#include "egtb/tablebase_probe.h"
#include "hash/search_stats.h"
#include "movegen/move_text.h"
#include "search/searcher.h"
#include "shell/base/console.h"
#include "shell/base/settings.h"

namespace brivok {

namespace {

/// Nothing is printed before this iteration.
constexpr int FirstPrintedIteration = 3;

/// The moves in hand are told after this time, in centiseconds.
constexpr std::uint32_t CurrentMoveDelay = 500;
constexpr std::uint32_t AnalysisMoveDelay = 100;

/// A periodic line comes each time these bits of the node count are all zero.
constexpr std::uint32_t PeriodicMask = (1U << 20U) - 1;

/// Undo records that naming and making one more move of a line can take.
constexpr int PlyRoomForText = 4;

constexpr int FirstAnalysedIteration = 7;  ///< of the status lines outside UCI

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

/// The hits in endgame tables since the program started; empty when there is none.
std::string tableHits(const char* before = "", const char* behind = "") {
    if (tablebases.tbHits == 0) return "";
    return before + ("tbhits " + std::to_string(tablebases.tbHits)) + behind;
}

/// The mood of the engine by its score.
const char* face(int score) {
    if (score <= -500) return " X-(";
    if (score <= -250) return ":'-(";
    if (score <= -50) return " :-(";
    if (score <= 50) return " :-|";
    if (score <= 250) return " :-)";
    if (score <= 500) return ":-))";
    return " :-D";
}

unsigned long moveNumber(const Board& board) { return board.gamePly() / 2 + 1; }

/// "12. " before a move of White, "12. ... " before one of Black.
std::string numberText(const Board& board) {
    return std::to_string(moveNumber(board)) + (board.sideToMove == White ? ". " : ". ... ");
}

}  // namespace

void Searcher::printIteration(int score, Event event) {
    if (iteration < FirstPrintedIteration) return;
    if (speaksUci()) {
        printUciInfo(score, event);
    } else if (postThinking) {
        printThinking(score, event);
    }
}

void Searcher::printUciInfo(int score, Event event) {
    std::string line = renderPv(PvStyle::Coordinate);
    std::string scoreField = scoreText(score);
    const bool failed = event == Event::FailedHigh || event == Event::FailedLow;
    if (failed && std::abs(score) <= MateBound) {
        line = moveToCoordinate(board->pvTable[1][1]);
        scoreField += event == Event::FailedHigh ? "lowerbound " : "upperbound ";
    }
    const std::uint32_t ms = elapsed() * 10;
    const auto hashfull = static_cast<unsigned>(transpositionTable.fillPermille());
    Print(*theApplication,
          "info depth %d seldepth %d time %u hashfull %u score %snodes %lu nps %u hashfull %u %spv "
          "%s\n",
          iteration, selDepth, ms, hashfull, scoreField.c_str(), nodeCount(), nodesPerSecond(ms),
          hashfull, tableHits("", " ").c_str(), line.c_str());
}

void Searcher::printPeriodic() {
    if ((searchStats.nodes & PeriodicMask) != 0 || searchMode != SearchMode::Analysing) return;
    if (iteration < FirstPrintedIteration || !speaksUci()) return;
    Print(*theApplication, "info nodes %lu nps %u hashfull %u %s\n", nodeCount(),
          nodesPerSecond(elapsed() * 10), static_cast<unsigned>(transpositionTable.fillPermille()),
          tableHits(" ").c_str());
}

void Searcher::printRootMove(bool firstOfPass) {
    if (speaksUci()) {
        if (iteration >= FirstPrintedIteration) printUciRootMove(firstOfPass);
    } else if (postThinking && searchMode == SearchMode::Analysing &&
               iteration >= FirstAnalysedIteration) {
        printStat01(currentMoveText);
    }
}

void Searcher::printUciRootMove(bool firstOfPass) {
    const std::uint32_t used = elapsed();
    const bool analysing = searchMode == SearchMode::Analysing;
    if (used < (analysing ? AnalysisMoveDelay : CurrentMoveDelay)) return;

    const int number = rootMovesTotal - rootMovesLeft;
    const auto hashfull = static_cast<unsigned>(transpositionTable.fillPermille());
    if (firstOfPass) {
        Print(*theApplication,
              "info currmovenumber %d currmove %s depth %d seldepth %d time %u nodes %lu nps %u "
              "hashfull %u %s\n",
              number, currentMoveText.c_str(), iteration, selDepth, used * 10, nodeCount(),
              nodesPerSecond(used * 10), hashfull, tableHits().c_str());
    } else {
        Print(*theApplication, "info currmove %s currmovenumber %d nodes %lu hashfull %u %s\n",
              currentMoveText.c_str(), number, nodeCount(), hashfull, tableHits(" ").c_str());
    }
}

void Searcher::printThinking(int score, Event event) {
    Application& app = *theApplication;
    const std::uint32_t used = elapsed();
    const bool finished = event == Event::Finished;
    Print(app, "%2d%s %5d %7u %10lu ", iteration, finished ? "." : " ", score, used, nodeCount());
    if (settings.extraInfo) Print(app, "%5s ", face(score));
    if (event == Event::FailedHigh || event == Event::FailedLow) {
        const std::string move = numberText(*board) + moveToSan(*board, board->pvTable[1][1]);
        Print(app, "%s %s\n", move.c_str(), event == Event::FailedHigh ? "++" : "--");
        return;
    }
    Print(app, "%s", renderPv(PvStyle::San).c_str());
    if (settings.extraInfo) {
        const double seconds = (used + 1.0) * 0.01;
        const int nps = searchStats.nodes == 0 ? 1 : static_cast<int>(searchStats.nodes / seconds);
        Print(app, "[nps:%d|depth:%d/%d", nps, iteration, selDepth);
        if (finished && branchingFactor != 0) Print(app, "|BF:%.2f", branchingFactor);
        if (tablebases.tbHits != 0) Print(app, "|tbhits:%d", static_cast<int>(tablebases.tbHits));
        Print(app, "]");
    }
    Print(app, "\n");
}

void Searcher::printAnalysisStatus() { printStat01(currentMoveText); }

void Searcher::printStat01(const std::string& moveText) {
    Print(*theApplication, "stat01: %u %lu %d %d %d %s\n", elapsed(), nodeCount(), iteration,
          rootMovesLeft, rootMovesTotal, moveText.c_str());
}

std::string Searcher::renderPv(PvStyle style) {
    // The line is played on the one board: that leaves its moves in the undo records, where a later
    // null move finds them, so printing is part of what the search does.
    Board& b = *board;
    const std::uint32_t plyBefore = b.ply;
    const bool san = style == PvStyle::San;
    std::string text;
    for (int c = 1; c < b.pvLength[1]; ++c) {
        const Move move = b.pvTable[1][c];
        if (san && (c == 1 || b.sideToMove == White)) text += numberText(b);
        text += (san ? moveToSan(b, move) : moveToCoordinate(move)) + " ";
        b.makeMove(move);
    }

    // Continued from the transposition table
    for (int added = 0; added < iteration && b.ply < UndoRecords - PlyRoomForText; ++added) {
        const Move move = transpositionTable.bestMove(b);
        if (move == NoMove) break;
        const std::string number =
            b.sideToMove == White ? std::to_string(moveNumber(b)) + "." : std::string();
        const std::string name = san ? moveToSan(b, move) : moveToCoordinate(move);
        b.makeMove(move);
        if (b.moverInCheck()) {
            b.unmakeMove();
            break;
        }
        if (san) text += number + " <";
        text += name;
        text += san ? "> " : " ";
    }
    while (b.ply > plyBefore) b.unmakeMove();
    return text;
}

void Searcher::printStatistics() const {
    const SearchStats& s = searchStats;
    // A divisor is one larger than its counter, so that nothing is divided by zero.
    const auto percent = [](std::uint32_t part, std::uint32_t whole) {
        return static_cast<double>(static_cast<float>(part) * 100.0F /
                                   (static_cast<float>(whole) + 1.0F));
    };
    const auto count = [](std::uint32_t counter) { return static_cast<unsigned long>(counter); };
    Application& app = *theApplication;
    LogOnly(app, "Nodes: %lu Qnodes: %lu (%3.3f%%) Ordering efficiency: %3.3f%%\n", count(s.nodes),
            count(s.qnodes), percent(s.qnodes, s.nodes), percent(s.failHighsFirst, s.failHighs));
    LogOnly(app, "Transposition Hash: (S/P/H): %lu/%lu/%lu (%3.3f%%)\n", count(s.ttStores),
            count(s.ttProbes), count(s.ttHits), percent(s.ttHits, s.ttProbes));
    LogOnly(app, "Pawn Hash: (S/P/H): %lu/%lu/%lu (%3.3f%%)\n", count(s.pawnHashStores),
            count(s.pawnHashProbes), count(s.pawnHashHits),
            percent(s.pawnHashHits, s.pawnHashProbes));
    LogOnly(app, "Evaluation Hash: (S/P/H): %lu/%lu/%lu (%3.3f%%)\n", count(s.evalHashStores),
            count(s.evalHashProbes), count(s.evalHashHits),
            percent(s.evalHashHits, s.evalHashProbes));
    const TablebaseState& tables = tablebases;
    LogOnly(app, "EGTB: (P/H): %ld/%ld (%3.3f%%)\n", static_cast<long>(tables.tbProbes),
            static_cast<long>(tables.tbHits), percent(tables.tbHits, tables.tbProbes));
    LogOnly(app, "Null-Move: (TMin/TMax/CMin/CMax): %lu/%lu/%lu/%lu\n", count(s.nullTriesMin),
            count(s.nullTriesMax), count(s.nullCutsMin), count(s.nullCutsMax));
    LogOnly(app, "Extensions: (C/OR/RC/T/PP/EC): %lu/%lu/%lu/%lu/%lu/%lu\n", count(s.extCheck),
            count(s.extOneReply), count(s.extRecapture), count(s.extMateThreat),
            count(s.extPawnPush), count(s.extEndgameCapture));
    LogOnly(app, "Evaluations: (F/L): %lu/%lu\n", count(s.evalFull), count(s.evalLazy));

    const std::pair<const char*, std::uint32_t> rest[] = {
        {"Re-searchs", s.reSearches},     {"IID", s.iidSearches},
        {"SEE cuts", s.seeCuts},          {"Fut.Cuts", s.futilityCuts},
        {"Raz.Reduc", s.razorReductions}, {"Delta Cuts", s.deltaCuts}};
    for (const auto& [name, counter] : rest) {
        if (counter != 0) LogOnly(app, "%s: %lu\n", name, count(counter));
    }
}

}  // namespace brivok
