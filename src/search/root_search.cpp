#include "board/coordinate.h"
#include "hash/search_stats.h"
#include "movegen/move_text.h"
#include "search/searcher.h"
#include "shell/base/application.h"
#include "shell/base/settings.h"

namespace brivok {

namespace {

bool speaksWinBoard() { return theApplication->currentProtocol == Protocol::WinBoard; }

}  // namespace

/// Under WinBoard the engine watches over the end of the game itself. A ponder search leaves the
/// result alone.
bool Searcher::isRootDrawn() {
    if (!speaksWinBoard()) return false;
    GameOutcome outcome = GameOutcome::None;
    if (board->countRepetitions(0).inGame >= 3) {
        outcome = GameOutcome::Repetition;
    } else if (board->isInsufficientMaterial()) {
        outcome = GameOutcome::InsufficientMaterial;
    }
    if (outcome == GameOutcome::None) return false;
    if (searchMode != SearchMode::Pondering) gameOutcome = outcome;
    return true;
}

int Searcher::searchRoot(int alpha, int beta, int depth) {
    constexpr int RootPly = 1;
    Board& b = *board;
    followPv = true;
    b.pvLength[RootPly] = RootPly;
    bestRootMove = NoMove;
    int best = -MateScore;
    int movesDone = 0;

    if (isRootDrawn()) {
        b.pvLength[RootPly] = 0;
        return DrawScore;
    }

    // Table: for its move and threat only. The depth is the one before the check extension.
    TranspositionTable::Found found;
    bool allowNull = true;
    (void)transpositionTable.probe(b.hashKey, RootPly, beta, depth, found, allowNull);

    const bool rootInCheck = b.inCheckAtPly[RootPly] != 0;
    if (rootInCheck) {
        depth += settings.checkExtension;
        ++searchStats.extCheck;
    }
    rootMovesTotal = rootMovesLeft = legalRootMoveCount;
    selDepth = 1;
    scoreMoves(root, found.move, RootPly);

    // Move loop
    int i = 0;
    for (Move m = pickMove(root, i); m != NoMove; m = pickMove(root, i)) {
        currentMoveText = speaksWinBoard() ? moveToSan(b, m) : moveToCoordinate(m);
        b.makeMove(m);
        if (!rootInCheck && b.moverInCheck()) {
            b.unmakeMove();
            continue;
        }
        const std::uint32_t nodesBefore = searchStats.nodes;

        // Extensions, without a cap
        int extension = 0;
        b.inCheckAtPly[RootPly + 1] = b.inCheck();
        if (b.inCheckAtPly[RootPly + 1] != 0) {
            extension = settings.checkExtension;
            ++searchStats.extCheck;
        }
        if (isSeventhRankPush(m)) {
            extension += settings.pawnPushExtension;
            ++searchStats.extPawnPush;
        }
        --rootMovesLeft;
        printRootMove(movesDone == 0);

        const int newDepth = depth + extension - OnePly;
        int score = 0;
        if (movesDone == 0 || iteration == 1) {
            score = searchChild(alpha, beta, newDepth, RootPly + 1, false);
            if (!stopSearch && iteration >= 3 && score <= alpha) failingLow = true;
        } else {
            score = searchChild(alpha, alpha + 1, newDepth, RootPly + 1, false);
            if (score > alpha && score < beta && !stopSearch) {
                score = searchChild(alpha, beta, newDepth, RootPly + 1, false);
                if (score > alpha && !stopSearch) {
                    failingLow = false;
                    bestRootMove = m;
                    best = score;
                }
            }
        }
        b.unmakeMove();
        if (stopSearch) {
            if (movesDone == 0) bestRootMove = NoMove;
            return best;
        }
        if (score > best) {
            best = score;
            bestRootMove = m;
        }
        ++movesDone;

        if (score > alpha) {
            if (moveCapture(m) == Empty) {
                b.storeKiller(m, RootPly);
                b.updateHistory(m, depth);
            }
            bestRootMove = m;
            best = alpha = score;
            transpositionTable.store(b.hashKey, RootPly, score, BoundLower, m, found.mateThreat,
                                     depth);
            b.updatePv(RootPly, m);
            if (score >= beta) return score;
            printIteration(score, Event::NewBest);
        }
        rootMoveNodes[static_cast<unsigned>(i)] = searchStats.nodes - nodesBefore;
    }

    // End of the game
    if (searchMode == SearchMode::Pondering) return best;
    if (movesDone == 0) {
        gameOutcome = outcomeWithoutMoves();
        return best;
    }
    if (b.fiftyCount > FiftyMoveLimit) {
        gameOutcome = GameOutcome::FiftyMoves;
    } else if (b.isInsufficientMaterial()) {
        gameOutcome = GameOutcome::InsufficientMaterial;
    } else {
        return best;
    }
    b.pvLength[RootPly] = 0;
    bestRootMove = NoMove;
    return DrawScore;
}

}  // namespace brivok
