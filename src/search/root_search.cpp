#include "search/searcher.h"

namespace brivok {

/// If the engine keeps the game, it checks for the end of the game. A ponder search leaves the
/// result alone.
bool Searcher::isRootDrawn() {
    if (!keepsGame) return false;
    const GameOutcome draw =
        drawnBy<GameOutcome::Repetition, GameOutcome::InsufficientMaterial>(*board);
    if (draw == GameOutcome::None) return false;
    if (searchMode != SearchMode::Pondering) gameOutcome = draw;
    return true;
}

int Searcher::searchRoot(int alpha, int beta, int depth) {
    // 1. Start of the pass
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

    // 2. Transposition table: only for its move and mate threat. The depth is the one before the
    // check extension.
    TranspositionTable::Found found;
    bool allowNull = true;
    (void)probeTable(RootPly, beta, depth, found, allowNull);

    const bool rootInCheck = b.inCheckAtPly[RootPly] != 0;
    if (rootInCheck) {
        depth += settings.checkExtension;
        ++stats.extCheck;
    }
    rootMovesTotal = rootMovesLeft = legalRootMoveCount;
    selDepth = 1;
    scoreMoves(root, found.move, RootPly);

    // 3. Move loop
    for (Move m = root.next(b); m != NoMove; m = root.next(b)) {
        currentMoveText = listener->rootMoveText(b, m);
        b.makeMove(m);
        if (!rootInCheck && b.moverInCheck()) {
            b.unmakeMove();
            continue;
        }
        const std::uint32_t nodesBefore = stats.nodes;
        // Extensions, not limited
        const int extension = checkExtensionOf(RootPly) + pawnPushExtensionOf(m);
        --rootMovesLeft;
        if (iteration >= listener->firstToldIteration) {
            listener->onRootMove(progress(), movesDone == 0);
        }
        const int score =
            searchRootMove(m, alpha, beta, depth + extension - OnePly, movesDone, best);
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
            storeInTable(RootPly, score, BoundLower, m, found.mateThreat, depth);
            b.updatePv(RootPly, m);
            if (score >= beta) return score;
            tellIteration(score, SearchEvent::NewBest);
        }
        rootMoveNodes[root.index()] = stats.nodes - nodesBefore;
    }

    // 4. The end of the game
    if (searchMode == SearchMode::Pondering) return best;
    if (movesDone == 0) {
        gameOutcome = outcomeWithoutMoves(b.sideToMove, rootInCheck);
        return best;
    }
    const GameOutcome draw = drawnBy<GameOutcome::FiftyMoves, GameOutcome::InsufficientMaterial>(b);
    if (draw == GameOutcome::None) return best;
    gameOutcome = draw;
    b.pvLength[RootPly] = 0;
    bestRootMove = NoMove;
    return DrawScore;
}

/// Searches a root move: the first move of a pass, and every move of the first iteration, with the
/// full window; the others with a null window and, if they rise above alpha, again with the full
/// one.
int Searcher::searchRootMove(Move m, int alpha, int beta, int newDepth, int movesDone, int& best) {
    if (movesDone == 0 || iteration == 1) {
        const int score = searchChild(alpha, beta, newDepth, RootPly + 1, false);
        if (!stopSearch && iteration >= FirstTimedIteration && score <= alpha) failingLow = true;
        return score;
    }
    int score = searchChild(alpha, alpha + 1, newDepth, RootPly + 1, false);
    if (score > alpha && score < beta && !stopSearch) {
        score = searchChild(alpha, beta, newDepth, RootPly + 1, false);
        if (score > alpha && !stopSearch) {
            failingLow = false;
            bestRootMove = m;
            best = score;
        }
    }
    return score;
}

}  // namespace brivok
