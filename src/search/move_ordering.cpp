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
    const Move killer1 = b.killer1[searchPly];
    const Move killer2 = b.killer2[searchPly];
    const auto byExperience = [&](Move m) {
        const int killer = m == killer1 ? OrderKiller1 : m == killer2 ? OrderKiller2 : 0;
        return b.history[b.squares[moveFrom(m)]][moveTo(m)] + killer;
    };

    list.restart();
    if (!wasFollowing) {
        for (int i = 0; i < list.count; ++i) {
            const Move m = list.moves[i];
            list.score(b, m == hashMove ? OrderPvMove : byExperience(m));
        }
        return;
    }
    const Move pvMove = b.pvTable[1][searchPly];
    const bool byRootNodes = searchPly == RootPly && iteration >= 2;
    for (int i = 0; i < list.count; ++i) {
        const Move m = list.moves[i];
        int extra = 0;
        if (m == pvMove) {
            followPv = true;
            extra = OrderPvMove;
        }
        if (m == hashMove) {
            extra += OrderPvMove;
        } else if (byRootNodes) {
            extra += static_cast<int>(rootMoveNodes[i] / 100);
        } else {
            extra += byExperience(m);
        }
        list.score(b, extra);
    }
}

}  // namespace brivok
