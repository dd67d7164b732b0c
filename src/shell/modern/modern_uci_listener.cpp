#include "shell/modern/modern_uci_listener.h"

#include <algorithm>
#include <cstddef>

#include "eval/evaluate.h"
#include "search/score.h"
#include "shell/base/console.h"
#include "shell/modern/modern_options.h"
#include "shell/principal_variation.h"

namespace brivok {

namespace {

/// Centiseconds after which the current move is reported.
constexpr std::uint32_t CurrentMoveDelay = 500;
constexpr std::uint32_t AnalysisMoveDelay = 100;

/// Milliseconds of a centisecond, the smallest time that is measured.
constexpr std::uint32_t ClockResolution = 10;

std::uint32_t millisecondsOf(const SearchProgress& progress) {
    return progress.elapsed * ClockResolution;
}

std::uint64_t nodesPerSecond(const SearchProgress& progress) {
    const std::uint32_t milliseconds = std::max(millisecondsOf(progress), ClockResolution);
    return progress.nodes * 1000 / milliseconds;
}

std::string scoreText(int score) {
    if (score > MateBound) return "mate " + std::to_string(movesToMate(score));
    if (score < -MateBound) return "mate " + std::to_string(-((MateScore + score) / 2));
    return "cp " + std::to_string(score);
}

std::string boundText(SearchEvent event) {
    switch (event) {
        case SearchEvent::FailedHigh: return " lowerbound";
        case SearchEvent::FailedLow: return " upperbound";
        default: return "";
    }
}

ModernPv::Notation notation() {
    return modernSettings.castlingStyle == CastlingStyle::KingOntoRook
               ? ModernPv::Notation::KingOntoRook
               : ModernPv::Notation::Letters;
}

std::string nameOf(const Board& board, Move move) {
    return moveText(board, move, modernSettings.castlingStyle);
}

/// The static score. Leaves the evaluation table and the counters alone, which the next search
/// and its statistics use.
int staticScore(const Board& board) {
    SearchStats unused;
    Evaluation with{evalHashTable, pawnHashTable, unused, settings};
    EvalHashRecord record{};
    return EvaluateAnew(board, with, record, -MateScore, MateScore);
}

bool isDraw(GameOutcome outcome) {
    return outcome == GameOutcome::FiftyMoves || outcome == GameOutcome::Repetition ||
           outcome == GameOutcome::InsufficientMaterial;
}

}  // namespace

void ModernUciListener::begin(const SearchProgress& progress) {
    toldMove = NoMove;
    toldDepth = 0;
    hitsBefore = progress.tableHits;
}

void ModernUciListener::finish(const SearchProgress& progress, Move best, GameOutcome outcome) {
    const Board& board = progress.board;
    if (best == NoMove) {
        Print(app, "info depth 0 score %s\n", board.inCheck() ? "mate 0" : "cp 0");
    } else if (isDraw(outcome) || toldDepth == 0) {
        const int score = isDraw(outcome) ? DrawScore : staticScore(board);
        tell(progress, {1, 1, scoreText(score), nameOf(board, best)});
    } else if (toldMove != best) {
        tell(progress, {toldDepth, progress.selDepth, scoreText(progress.iterationScore),
                        pv.render(progress, {&best, 1}, notation())});
    }
}

void ModernUciListener::onBookMove(Board& /*board*/, Move /*move*/) {
    Print(app, "info string book move\n");
}

std::string ModernUciListener::rootMoveText(Board& board, Move move) { return nameOf(board, move); }

void ModernUciListener::onRootMove(const SearchProgress& progress, bool /*firstOfPass*/) {
    const bool analysing = progress.mode == SearchMode::Analysing;
    if (progress.elapsed < (analysing ? AnalysisMoveDelay : CurrentMoveDelay)) return;
    Print(app, "info depth %d seldepth %d currmove %s currmovenumber %d time %u%s\n",
          progress.iteration, progress.selDepth, std::string(progress.currentMoveText).c_str(),
          progress.rootMovesTotal - progress.rootMovesLeft, millisecondsOf(progress),
          counters(progress).c_str());
}

void ModernUciListener::onIteration(const SearchProgress& progress, int score, SearchEvent event) {
    // For its effect on the undo records alone: see SearchListener.
    if (progress.iteration >= FirstToldIteration) (void)renderPv(progress, PvStyle::Coordinate);

    const Board& board = progress.board;
    const Move first = board.pvTable[1][1];
    const std::string bound = boundText(event);
    std::string line;
    if (bound.empty()) {
        line = pv.render(progress, notation());
    } else if (first != NoMove) {
        line = nameOf(board, first);
    }
    tell(progress, {progress.iteration, progress.selDepth, scoreText(score) + bound, line});
    toldMove = first;
}

void ModernUciListener::onLines(const SearchProgress& progress, std::span<const SearchLine> lines) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const SearchLine& line = lines[i];
        tell(progress,
             {progress.iteration, line.selDepth, scoreText(line.score),
              pv.render(progress, line.moves, notation()), " multipv " + std::to_string(i + 1)});
    }
    if (!lines.empty() && !lines[0].moves.empty()) toldMove = lines[0].moves[0];
}

void ModernUciListener::onManyNodes(const SearchProgress& progress) {
    Print(app, "info time %u%s\n", millisecondsOf(progress), counters(progress).c_str());
}

void ModernUciListener::onStatistics(const SearchStats& /*stats*/) {}

void ModernUciListener::tell(const SearchProgress& progress, const Told& line) {
    std::string moves = line.moves;
    while (moves.ends_with(' ')) moves.pop_back();
    if (!moves.empty()) moves = " pv " + moves;
    Print(app, "info depth %d seldepth %d%s score %s time %u%s%s\n", line.depth, line.selDepth,
          line.number.c_str(), line.score.c_str(), millisecondsOf(progress),
          counters(progress).c_str(), moves.c_str());
    toldDepth = line.depth;
}

std::string ModernUciListener::counters(const SearchProgress& progress) const {
    std::string text = " nodes " + std::to_string(progress.nodes) + " nps " +
                       std::to_string(nodesPerSecond(progress)) + " hashfull " +
                       std::to_string(progress.table.fillPermille());
    const std::uint32_t hits = progress.tableHits - hitsBefore;
    if (hits != 0) text += " tbhits " + std::to_string(hits);
    return text;
}

}  // namespace brivok
