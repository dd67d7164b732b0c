#include "shell/console_listener.h"

#include <cstdint>
#include <string>

#include "movegen/san.h"
#include "search/searcher.h"
#include "shell/base/console.h"
#include "shell/base/settings.h"
#include "shell/principal_variation.h"

namespace brivok {

namespace {

constexpr int FirstAnalysedIteration = 7;  ///< analysis status lines start here

/// The engine's mood, as an emoticon for its score.
const char* face(int score) {
    if (score <= -500) return " X-(";
    if (score <= -250) return ":'-(";
    if (score <= -50) return " :-(";
    if (score <= 50) return " :-|";
    if (score <= 250) return " :-)";
    if (score <= 500) return ":-))";
    return " :-D";
}

/// Prints the bracketed part after the line of moves.
void printExtraInfo(Application& app, const SearchProgress& progress, bool finished) {
    const std::uint32_t nodes = progress.stats.nodes;
    const double seconds = (progress.elapsed + 1.0) * 0.01;
    const int nps = nodes == 0 ? 1 : static_cast<int>(nodes / seconds);
    Print(app, "[nps:%d|depth:%d/%d", nps, progress.iteration, progress.selDepth);
    if (finished && progress.branchingFactor != 0) Print(app, "|BF:%.2f", progress.branchingFactor);
    if (progress.tableHits != 0) Print(app, "|tbhits:%d", progress.tableHits);
    Print(app, "]");
}

void printThinking(Application& app, const SearchProgress& progress, int score, SearchEvent event) {
    const bool finished = event == SearchEvent::Finished;
    Print(app, "%2d%s %5d %7u %10u ", progress.iteration, finished ? "." : " ", score,
          progress.elapsed, progress.stats.nodes);
    if (settings.extraInfo) Print(app, "%5s ", face(score));
    if (event == SearchEvent::FailedHigh || event == SearchEvent::FailedLow) {
        Board& board = progress.board;
        const std::string move = moveNumberText(board) + moveToSan(board, board.pvTable[1][1]);
        Print(app, "%s %s\n", move.c_str(), event == SearchEvent::FailedHigh ? "++" : "--");
        return;
    }
    Print(app, "%s", renderPv(progress, PvStyle::San).c_str());
    if (settings.extraInfo) printExtraInfo(app, progress, finished);
    Print(app, "\n");
}

}  // namespace

void printAnalysisStatus(Application& app, const SearchProgress& progress) {
    Print(app, "stat01: %u %u %d %d %d %s\n", progress.elapsed, progress.stats.nodes,
          progress.iteration, progress.rootMovesLeft, progress.rootMovesTotal,
          std::string(progress.currentMoveText).c_str());
}

void ConsoleListener::onIteration(const SearchProgress& progress, int score, SearchEvent event) {
    if (theSearcher.postThinking) printThinking(app, progress, score, event);
}

void ConsoleListener::onRootMove(const SearchProgress& progress, bool /*firstOfPass*/) {
    if (!theSearcher.postThinking || progress.mode != SearchMode::Analysing) return;
    if (progress.iteration >= FirstAnalysedIteration) printAnalysisStatus(app, progress);
}

void WinBoardListener::onBookMove(Board& board, Move move) {
    Print(app, "0 1 0 0 %s (Book move)\n", moveToSan(board, move).c_str());
}

void WinBoardListener::onPonderMove(Board& board, Move move) {
    Print(app, "Hint: %s\n", moveToSan(board, move).c_str());
}

std::string WinBoardListener::rootMoveText(Board& board, Move move) {
    return moveToSan(board, move);
}

}  // namespace brivok
