#include <algorithm>

#include "board/coordinate.h"
#include "book/opening_book.h"
#include "eval/evaluate.h"
#include "hash/search_stats.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/console.h"
#include "shell/base/settings.h"

namespace brivok {

namespace {

/// Bounds of a pass without a window, and those of the re-search on the side that failed.
constexpr int FullAlpha = -MateScore;
constexpr int FullBeta = MateScore;
constexpr int OpenAlpha = -MateScore - 1;
constexpr int OpenBeta = MateScore + 1;

/// Above this, a mate score that lies within the nominal depth ends the deepening.
constexpr int SurelyWon = 9000;

/// Score of a mate with the very next move.
constexpr int MateInOne = MateScore - 2;

/// Kept back from the clock on the last of the moves to go: that move may claim nearly all of it,
/// and the clock is looked at only every so many nodes. Centiseconds.
constexpr std::uint32_t ClockReserve = 5;

}  // namespace

Move Searcher::think() {
    searchStats = {};
    bookMove = false;
    lazyMargin = 0;
    mayExtendTime = true;
    stopSearch = false;
    Move bestMove = NoMove;

    Board& b = *board;
    if (const Move fromBook = askBook(); fromBook != NoMove) return fromBook;
    makePonderMove();

    // Root list
    clearRootMoves();
    const bool inCheck = generateForPosition(b, root.moves);
    b.inCheckAtPly[1] = inCheck;
    root.count = b.moveCount;
    int lastLegal = root.count - 1;
    legalRootMoveCount =
        inCheck ? root.count : countLegalInList(b, root.moves, root.count, lastLegal);
    if (searchMode != SearchMode::Pondering && legalRootMoveCount == 1) {
        ponderMove = NoMove;
        return root.moves[lastLegal];
    }
    if (legalRootMoveCount == 0) {
        if (searchMode != SearchMode::Pondering) gameOutcome = outcomeWithoutMoves();
        return NoMove;
    }

    allocateBudget();
    beginSearch();

    // Iterations
    for (iteration = 1; iteration <= maxIteration; ++iteration) {
        const int depth = iteration * OnePly + OnePly / 2;
        const int window = settings.aspirationWindow;
        const int alpha = iteration == 1 ? FullAlpha : iterationScore - window;
        const int beta = iteration == 1 ? FullBeta : iterationScore + window;
        failingLow = false;
        int score = searchRoot(alpha, beta, depth);
        if (gameOutcome != GameOutcome::None) break;

        if (score <= alpha && !stopSearch) {
            ++searchStats.reSearches;
            failingLow = true;
            printIteration(score, Event::FailedLow);
            const int limit = score + 1;
            score = searchRoot(OpenAlpha, limit, depth);
            if (!stopSearch) failingLow = false;
            if (gameOutcome != GameOutcome::None) break;
            if (score >= limit && !stopSearch) {
                ++searchStats.reSearches;
                failingLow = false;
                printIteration(score, Event::FailedHigh);
                score = searchRoot(FullAlpha, FullBeta, depth);
            }
        }
        // Not an alternative to the above: a score that came back from a failed-low pass is held
        // against beta too.
        if (score >= beta && !stopSearch) {
            ++searchStats.reSearches;
            bestMove = bestRootMove;
            failingLow = false;
            iterationScore = score;
            printIteration(score, Event::FailedHigh);
            const int limit = score - 1;
            score = searchRoot(limit, OpenBeta, depth);
            if (gameOutcome != GameOutcome::None) break;
            if (score <= limit && !stopSearch) {
                ++searchStats.reSearches;
                failingLow = true;
                printIteration(score, Event::FailedLow);
                score = searchRoot(FullAlpha, FullBeta, depth);
                if (!stopSearch) failingLow = false;
            }
        }

        if (bestRootMove != NoMove && !failingLow) {
            iterationScore = score;
            bestMove = bestRootMove;
            noteFinishedIteration();
            if (!stopSearch) printIteration(score, Event::Finished);
            if (iterationScore > SurelyWon && MateScore - iterationScore < iteration) break;
        }
        if (stopSearch || isBudgetNearlySpent()) break;
    }

    findPonderMove(bestMove);
    if (iterationScore == MateInOne && searchMode != SearchMode::Pondering) {
        ponderMove = NoMove;
        gameOutcome = b.sideToMove == White ? GameOutcome::WhiteMates : GameOutcome::BlackMates;
    }
    if (theApplication->currentProtocol != Protocol::Uci) printStatistics();
    return bestMove;
}

/// A move from the opening book, if one is wanted and known; 0 otherwise.
Move Searcher::askBook() {
    const bool wanted = settings.bookEnabled && searchMode != SearchMode::Analysing &&
                        searchMode != SearchMode::Pondering && board->bookGate < OpenBookGate;
    if (!wanted) return NoMove;
    const Move move = OpeningBook(settings.bookFileName).SelectMove(*board);
    if (move == NoMove) return NoMove;
    if (theApplication->currentProtocol == Protocol::WinBoard) {
        Print(*theApplication, "0 1 0 0 %s (Book move)\n", moveToSan(*board, move).c_str());
    }
    bookMove = true;
    ponderMove = NoMove;
    iterationScore = 0;
    return move;
}

/// Under UCI the interface has placed the position already.
void Searcher::makePonderMove() {
    if (searchMode != SearchMode::Pondering) return;
    if (theApplication->currentProtocol == Protocol::Uci || !isLegalMove(*board, ponderMove))
        return;
    Print(*theApplication, "Hint: %s\n", moveToSan(*board, ponderMove).c_str());
    board->playGameMove(ponderMove);
}

void Searcher::noteFinishedIteration() {
    const auto index = static_cast<std::size_t>(iteration);
    branchingFactor = 0;
    if (index >= nodesAtIteration.size()) return;
    nodesAtIteration[index] = searchStats.nodes;
    const std::uint32_t before = nodesAtIteration[index - 1];
    if (before != 0) {
        branchingFactor = static_cast<float>(searchStats.nodes) / static_cast<float>(before);
    }
}

GameOutcome Searcher::outcomeWithoutMoves() const {
    if (board->inCheckAtPly[1] == 0) return GameOutcome::Stalemate;
    return board->sideToMove == White ? GameOutcome::BlackMates : GameOutcome::WhiteMates;
}

void Searcher::allocateBudget() {
    TimeControl& clock = timeControl;
    clock.allocated = 0;
    if (searchMode == SearchMode::Analysing || maxIteration != NoFixedDepth) return;
    // Under UCI the moves to go are told with the clock.
    const bool uci = theApplication->currentProtocol == Protocol::Uci;
    if (clock.kind != ClockKind::Conventional) {
        clock.movesLeft = 0;
    } else if (!uci) {
        clock.movesLeft = clock.movesPerSession - board->gamePly() / 2 % clock.movesPerSession;
    }
    setBudget();
    if (uci && clock.movesLeft == 1) {
        const std::uint32_t most = clock.ownTime > ClockReserve ? clock.ownTime - ClockReserve : 1;
        clock.allocated = std::min(clock.allocated, most);
    }
    if (searchMode != SearchMode::Pondering) {
        Print(*theApplication, "## (Think) Left time: %d Thinking time: %d\n",
              static_cast<int>(clock.ownTime), static_cast<int>(clock.allocated));
    }
}

/// No budget at all reads as no limit: the shortest one is meant when there is a clock.
void Searcher::setBudget() {
    timeControl.allocated = timeControl.AllocateTime();
    if (timeControl.clockGiven) timeControl.allocated = std::max(timeControl.allocated, 1U);
}

void Searcher::takePonderHit() {
    setBudget();
    searchMode = SearchMode::Thinking;
}

void Searcher::beginSearch() {
    transpositionTable.nextGeneration();
    Board& b = *board;
    for (auto& row : b.pvTable) std::fill(std::begin(row), std::end(row), NoMove);
    std::fill(std::begin(b.pvLength), std::end(b.pvLength), 0);
    for (auto& row : b.history) std::fill(std::begin(row), std::end(row), 0);
    std::fill(std::begin(b.killer1), std::end(b.killer1), NoMove);
    std::fill(std::begin(b.killer2), std::end(b.killer2), NoMove);
    rootMoveNodes.fill(0);
    iterationScore = 0;
}

/// No new iteration is begun after two thirds of the budget, except under a fixed time.
bool Searcher::isBudgetNearlySpent() const {
    if (!isTimed() || timeControl.kind == ClockKind::FixedTime) return false;
    return iteration >= FirstTimedIteration && elapsed() > timeControl.allocated * 2.0 / 3.0;
}

void Searcher::findPonderMove(Move bestMove) {
    ponderMove = NoMove;
    if (searchMode == SearchMode::Pondering || !ponderEnabled || bestMove == NoMove) return;
    if (iteration < FirstTimedIteration) return;
    if (iterationScore <= -MateBound || iterationScore >= MateBound) return;
    board->makeMove(bestMove);
    ponderMove = transpositionTable.bestMove(*board);
    board->unmakeMove();
    if (ponderMove != NoMove) {
        LogOnly(*theApplication, "Ponder move: %s - Current score: %d\n",
                moveToCoordinate(ponderMove).c_str(), iterationScore);
    }
}

}  // namespace brivok
