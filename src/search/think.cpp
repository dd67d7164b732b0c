#include <algorithm>

#include "board/coordinate.h"
#include "book/opening_book.h"
#include "movegen/legal_moves.h"
#include "search/searcher.h"

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

Move Searcher::think(const SearchRequest& request, SearchListener& toTell) {
    listener = &toTell;
    prepare(request);

    // 1. The book, and the move to ponder on
    if (const Move fromBook = askBook(); fromBook != NoMove) return fromBook;
    makePonderMove();

    // 2. The root list. One move needs no search, and none ends the game.
    const int lastLegal = listRootMoves();
    if (searchMode != SearchMode::Pondering && legalRootMoveCount == 1) {
        ponderMove = NoMove;
        return root.moves[lastLegal];
    }
    if (legalRootMoveCount == 0) {
        if (searchMode != SearchMode::Pondering) {
            gameOutcome = outcomeWithoutMoves(board->sideToMove, board->inCheckAtPly[1] != 0);
        }
        return NoMove;
    }

    // 3. The search
    allocateBudget();
    beginSearch();
    const Move bestMove = deepen();

    // 4. What is left to the caller
    findPonderMove(bestMove);
    if (iterationScore == MateInOne && searchMode != SearchMode::Pondering) {
        ponderMove = NoMove;
        gameOutcome = outcomeWithoutMoves(opposite(board->sideToMove), true);
    }
    listener->onStatistics(stats);
    return bestMove;
}

void Searcher::prepare(const SearchRequest& request) {
    searchMode = request.mode;
    maxIteration = request.maxIteration;
    nodeLimit = request.nodeLimit;
    searchStartTime = request.startTime;
    keepsGame = request.keepsGame;
    if (request.clock) clock = *request.clock;

    stats = {};
    bookMove = false;
    evaluation.lazyMargin = 0;
    mayExtendTime = true;
    stopSearch = false;
}

int Searcher::listRootMoves() {
    Board& b = *board;
    std::fill(std::begin(root.moves), std::end(root.moves), NoMove);
    const bool inCheck = generateForPosition(b, root.moves);
    b.inCheckAtPly[1] = inCheck;
    root.count = b.moveCount;
    int lastLegal = root.count - 1;
    legalRootMoveCount =
        inCheck ? root.count : countLegalInList(b, root.moves, root.count, lastLegal);
    return lastLegal;
}

Move Searcher::deepen() {
    Move bestMove = NoMove;
    for (iteration = 1; iteration <= maxIteration; ++iteration) {
        int score = 0;
        if (!searchIteration(score, bestMove)) break;
        if (bestRootMove != NoMove && !failingLow) {
            iterationScore = score;
            bestMove = bestRootMove;
            noteFinishedIteration();
            if (!stopSearch) tellIteration(score, SearchEvent::Finished);
            if (iterationScore > SurelyWon && MateScore - iterationScore < iteration) break;
        }
        if (stopSearch || isBudgetNearlySpent()) break;
    }
    return bestMove;
}

bool Searcher::searchIteration(int& score, Move& bestMove) {
    // 1. A window around the last score
    const int depth = iteration * OnePly + OnePly / 2;
    const int window = settings.aspirationWindow;
    const int alpha = iteration == 1 ? FullAlpha : iterationScore - window;
    const int beta = iteration == 1 ? FullBeta : iterationScore + window;
    failingLow = false;
    score = searchRoot(alpha, beta, depth);
    if (gameOutcome != GameOutcome::None) return false;

    // 2. It failed low: a window below, and if the score comes back from there, none.
    if (score <= alpha && !stopSearch) {
        const int limit = score + 1;
        score = searchAgain(SearchEvent::FailedLow, score, OpenAlpha, limit, depth);
        if (!stopSearch) failingLow = false;
        if (gameOutcome != GameOutcome::None) return false;
        if (score >= limit && !stopSearch) {
            score = searchAgain(SearchEvent::FailedHigh, score, FullAlpha, FullBeta, depth);
        }
    }

    // 3. It failed high: the move is accepted, and a window above tells the score. Not an
    // alternative to the above: a score that came back from a failed-low pass is held against beta
    // too.
    if (score >= beta && !stopSearch) {
        bestMove = bestRootMove;
        iterationScore = score;
        const int limit = score - 1;
        score = searchAgain(SearchEvent::FailedHigh, score, limit, OpenBeta, depth);
        if (gameOutcome != GameOutcome::None) return false;
        if (score <= limit && !stopSearch) {
            score = searchAgain(SearchEvent::FailedLow, score, FullAlpha, FullBeta, depth);
            if (!stopSearch) failingLow = false;
        }
    }
    return true;
}

/// Another pass of the iteration, after a score outside the window.
int Searcher::searchAgain(SearchEvent event, int score, int alpha, int beta, int depth) {
    ++stats.reSearches;
    failingLow = event == SearchEvent::FailedLow;
    tellIteration(score, event);
    return searchRoot(alpha, beta, depth);
}

void Searcher::tellIteration(int score, SearchEvent event) {
    if (iteration >= FirstToldIteration) listener->onIteration(progress(), score, event);
}

/// A move from the opening book, if one is wanted and known; 0 otherwise.
Move Searcher::askBook() {
    const bool wanted = settings.bookEnabled && searchMode != SearchMode::Analysing &&
                        searchMode != SearchMode::Pondering && board->bookGate < OpenBookGate;
    if (!wanted) return NoMove;
    const Move move = OpeningBook(settings.bookFileName).SelectMove(*board);
    if (move == NoMove) return NoMove;
    listener->onBookMove(*board, move);
    bookMove = true;
    ponderMove = NoMove;
    iterationScore = 0;
    return move;
}

/// Unless the interface keeps the game: it has placed the position already.
void Searcher::makePonderMove() {
    if (searchMode != SearchMode::Pondering || !keepsGame) return;
    if (!isLegalMove(*board, ponderMove)) return;
    listener->onPonderMove(*board, ponderMove);
    board->playGameMove(ponderMove);
}

void Searcher::noteFinishedIteration() {
    const auto index = static_cast<std::size_t>(iteration);
    branchingFactor = 0;
    if (index >= nodesAtIteration.size()) return;
    nodesAtIteration[index] = stats.nodes;
    const std::uint32_t before = nodesAtIteration[index - 1];
    if (before != 0) {
        branchingFactor = static_cast<float>(stats.nodes) / static_cast<float>(before);
    }
}

void Searcher::allocateBudget() {
    clock.allocated = 0;
    if (searchMode == SearchMode::Analysing || maxIteration != NoFixedDepth) return;
    if (clock.kind != ClockKind::Conventional) {
        clock.movesLeft = 0;
    } else if (keepsGame) {
        clock.movesLeft = clock.movesPerSession - board->gamePly() / 2 % clock.movesPerSession;
    }
    setBudget();
    if (!keepsGame && clock.movesLeft == 1) {
        const std::uint32_t most = clock.ownTime > ClockReserve ? clock.ownTime - ClockReserve : 1;
        clock.allocated = std::min(clock.allocated, most);
    }
    if (searchMode != SearchMode::Pondering) listener->onBudget(clock);
}

/// No budget at all reads as no limit: the shortest one is meant when there is a clock.
void Searcher::setBudget() {
    clock.allocated = clock.AllocateTime();
    if (clock.clockGiven) clock.allocated = std::max(clock.allocated, 1U);
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
    if (!isTimed() || clock.kind == ClockKind::FixedTime) return false;
    return iteration >= FirstTimedIteration && elapsed() > clock.allocated * 2.0 / 3.0;
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
        note("Ponder move: " + moveToCoordinate(ponderMove) +
             " - Current score: " + std::to_string(iterationScore) + "\n");
    }
}

}  // namespace brivok
