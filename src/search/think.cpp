#include <algorithm>

#include "board/coordinate.h"
#include "book/opening_book.h"
#include "movegen/legal_moves.h"
#include "search/searcher.h"

namespace brivok {

namespace {

/// Bounds of a full-window pass, and the open bounds of a re-search on the side that failed.
constexpr int FullAlpha = -MateScore;
constexpr int FullBeta = MateScore;
constexpr int OpenAlpha = -MateScore - 1;
constexpr int OpenBeta = MateScore + 1;

/// If a mate score exceeds this and lies within the nominal depth, deepening ends.
constexpr int SurelyWon = 9000;

/// Score of mate on the next move.
constexpr int MateInOne = MateScore - 2;

/// Centiseconds kept in reserve on the last move before the time control: that move may use nearly
/// the whole clock, which is only polled every so many nodes.
constexpr std::uint32_t ClockReserve = 5;

}  // namespace

Move Searcher::think(const SearchRequest& request, SearchListener& toTell) {
    listener = &toTell;
    prepare(request);

    // 1. Book and ponder move
    if (const Move fromBook = askBook(request); fromBook != NoMove) return fromBook;
    makePonderMove();

    // 2. Root list. A single legal move is played without a search; none ends the game.
    const int lastLegal = listRootMoves(request.searchMoves);
    if (searchMode != SearchMode::Pondering && legalRootMoveCount == 1 &&
        !request.searchesOnlyMove) {
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
    const Move bestMove = tellsLines ? deepenLines(request.lines) : deepen();

    // 4. What the caller needs
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
    clockCounts = request.clockCounts;
    mateIn = request.mateIn;
    tellsLines = request.lines > 1;
    if (request.clock) clock = *request.clock;

    stats = {};
    nodesAtPoll = 0;
    bookMove = false;
    evaluation.lazyMargin = 0;
    mayExtendTime = true;
    stopSearch = false;
}

int Searcher::listRootMoves(std::span<const Move> searchMoves) {
    Board& b = *board;
    std::fill(std::begin(root.moves), std::end(root.moves), NoMove);
    const bool inCheck = generateForPosition(b, root.moves);
    b.inCheckAtPly[1] = inCheck;
    const Move* const end =
        std::remove_if(root.moves, root.moves + b.moveCount,
                       [searchMoves](Move move) { return !allows(searchMoves, move); });
    root.count = static_cast<int>(end - root.moves);
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
            if (isMateFound(iterationScore)) break;
        }
        if (stopSearch || isBudgetNearlySpent()) break;
    }
    return bestMove;
}

bool Searcher::searchIteration(int& score, Move& bestMove) {
    // 1. A window around the last score
    const int depth = iterationDepth();
    const int window = settings.aspirationWindow;
    const int alpha = iteration == 1 ? FullAlpha : iterationScore - window;
    const int beta = iteration == 1 ? FullBeta : iterationScore + window;
    failingLow = false;
    score = searchRoot(alpha, beta, depth);
    if (gameOutcome != GameOutcome::None) return false;

    // 2. Fail low: search a window below; if the score comes back above it, the full window.
    if (score <= alpha && !stopSearch) {
        const int limit = score + 1;
        score = searchAgain(SearchEvent::FailedLow, score, OpenAlpha, limit, depth);
        if (!stopSearch) failingLow = false;
        if (gameOutcome != GameOutcome::None) return false;
        if (score >= limit && !stopSearch) {
            score = searchAgain(SearchEvent::FailedHigh, score, FullAlpha, FullBeta, depth);
        }
    }

    // 3. Fail high: the move is accepted, and a window above finds the score. Not an "else": the
    // score of a pass that recovered from a fail low is compared with beta too.
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

/// Repeats the iteration's pass after a score outside the window.
int Searcher::searchAgain(SearchEvent event, int score, int alpha, int beta, int depth) {
    ++stats.reSearches;
    failingLow = event == SearchEvent::FailedLow;
    tellIteration(score, event);
    return searchRoot(alpha, beta, depth);
}

void Searcher::tellIteration(int score, SearchEvent event) {
    if (tellsLines || iteration < listener->firstToldIteration) return;
    listener->onIteration(progress(), score, event);
}

/// A move from the opening book if one is wanted and known; otherwise NoMove. The book knows
/// nothing of a choice of moves, nor of mates.
Move Searcher::askBook(const SearchRequest& request) {
    const bool wanted = settings.bookEnabled && searchMode != SearchMode::Analysing &&
                        searchMode != SearchMode::Pondering && board->bookGate < OpenBookGate &&
                        request.searchMoves.empty() && request.mateIn == 0;
    if (!wanted) return NoMove;
    const Move move = OpeningBook(settings.bookFileName).SelectMove(*board);
    if (move == NoMove) return NoMove;
    listener->onBookMove(*board, move);
    bookMove = true;
    ponderMove = NoMove;
    iterationScore = 0;
    return move;
}

/// Does nothing if the interface keeps the game: the position then already includes the move.
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
    if (searchMode == SearchMode::Analysing || !usesClock()) return;
    if (clock.kind != ClockKind::Conventional) {
        clock.movesLeft = 0;
    } else if (keepsGame) {
        const std::uint32_t movesMade = (board->gamePly() - clock.startPly) / 2;
        clock.movesLeft = clock.movesPerSession - movesMade % clock.movesPerSession;
    }
    setBudget();
    if (searchMode != SearchMode::Pondering) listener->onBudget(clock);
}

/// A budget of 0 would mean no limit, so with a clock the least budget is 1.
void Searcher::setBudget() {
    clock.allocated = clock.AllocateTime();
    if (!keepsGame && clock.movesLeft == 1) {
        const std::uint32_t most = clock.ownTime > ClockReserve ? clock.ownTime - ClockReserve : 1;
        clock.allocated = std::min(clock.allocated, most);
    }
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
    std::fill(std::begin(rootMoveNodes), std::end(rootMoveNodes), 0U);
    iterationScore = 0;
}

bool Searcher::isMateFound(int score) const {
    return isWantedMate(score) || (score > SurelyWon && MateScore - score < iteration);
}

bool Searcher::isWantedMate(int score) const {
    return score > MateBound && movesToMate(score) <= mateIn;
}

/// Whether two thirds of the budget are spent, so that no new iteration starts. Not with a fixed
/// time per move.
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
