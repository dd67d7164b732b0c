#include "search/searcher.h"

namespace brivok {

namespace {

constexpr int OrderPvMove = 128'000'000;
constexpr int OrderKiller1 = 7'000'000;
constexpr int OrderKiller2 = 5'000'000;

}  // namespace

void Searcher::scoreMoves(OrderedMoves& list, Move hashMove, int searchPly) {
    const Board& b = *board;
    const bool wasFollowing = followPv;
    followPv = false;
    const Move pvMove = wasFollowing ? b.pvTable[1][searchPly] : NoMove;
    const Move killer1 = b.killer1[searchPly];
    const Move killer2 = b.killer2[searchPly];
    const bool byRootNodes = wasFollowing && searchPly == 1 && iteration >= 2;

    list.restart();
    for (int i = 0; i < list.count; ++i) {
        const Move m = list.moves[i];
        int extra = 0;
        if (wasFollowing && m == pvMove) {
            followPv = true;
            extra += OrderPvMove;
        }
        if (m == hashMove) {
            extra += OrderPvMove;
        } else if (byRootNodes) {
            extra += static_cast<int>(rootMoveNodes[i] / 100);
        } else {
            extra += b.history[b.squares[moveFrom(m)]][moveTo(m)];
            if (m == killer1) {
                extra += OrderKiller1;
            } else if (m == killer2) {
                extra += OrderKiller2;
            }
        }
        if (moveCapture(m) != Empty || movePromotion(m) != Empty) {
            list.scoreCapture(b, extra);
        } else {
            list.scoreQuiet(extra);
        }
    }
}

}  // namespace brivok
