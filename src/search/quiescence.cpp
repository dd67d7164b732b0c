#include "search/searcher.h"

namespace brivok {

namespace {

constexpr int MaxQuiescencePly = 64;

}  // namespace

int Searcher::quiesce(int alpha, int beta, int searchPly, bool checkRepetition) {
    Board& b = *board;
    ++stats.nodes;
    ++stats.qnodes;
    if (pollSearch()) return 0;
    b.pvLength[searchPly] = searchPly;
    if (searchPly > selDepth) selDepth = searchPly;
    if (checkRepetition && isRepetitionDraw(searchPly)) return DrawScore;
    if (searchPly >= MaxQuiescencePly) return beta;

    const int standPat = Evaluate(b, evaluation, alpha, beta);
    if (standPat > alpha) {
        if (standPat >= beta) return standPat;
        alpha = standPat;
    }

    OrderedMoves list;
    generateCaptures(b, list.moves);
    list.count = b.moveCount;
    // Ordering takes about as long as memory takes to answer.
    for (int i = 0; i < list.count; ++i) {
        evaluation.evalHash.prefetch(b.likelyKeyAfter(list.moves[i]));
    }
    scoreMoves(list, NoMove, searchPly);

    int legalMoves = 0;
    for (Move m = list.nextReady(b); m != NoMove; m = list.nextReady(b)) {
        if (list.losesMaterial()) {
            ++stats.seeCuts;
            continue;
        }
        if (settings.useDeltaPruning && list.see(b) < alpha - standPat) {
            ++stats.deltaCuts;
            continue;
        }
        b.makeMove(m);
        evaluation.pawnHash.prefetch(b.pawnKey);
        if (b.moverInCheck()) {
            b.unmakeMove();
            continue;
        }
        ++legalMoves;
        const int score = -quiesce(-beta, -alpha, searchPly + 1, false);
        b.unmakeMove();
        if (score <= alpha) continue;
        if (score >= beta) return score;
        alpha = score;
        b.updatePv(searchPly, m);
    }
    stats.seeCuts += static_cast<std::uint32_t>(list.left());
    return legalMoves == 0 ? standPat : alpha;
}

}  // namespace brivok
