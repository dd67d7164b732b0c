#include "search/searcher.h"

namespace brivok {

namespace {

constexpr int OrderPvMove = 128'000'000;
constexpr int OrderGoodCapture = 10'000'000;
constexpr int OrderKiller1 = 7'000'000;
constexpr int OrderKiller2 = 5'000'000;

}  // namespace

void Searcher::scoreMoves(Frame& frame, Move hashMove, int searchPly) {
    const Board& b = *board;
    const bool wasFollowing = followPv;
    followPv = false;
    const Side opponent = opposite(b.sideToMove);
    const Move pvMove = b.pvTable[1][searchPly];
    const Move killer1 = b.killer1[searchPly];
    const Move killer2 = b.killer2[searchPly];
    const bool byRootNodes = wasFollowing && searchPly == 1 && iteration >= 2;

    for (int i = 0; i < frame.count; ++i) {
        const Move m = frame.moves[i];
        int order = 0;
        int see = 0;
        if (moveCapture(m) != Empty || movePromotion(m) != Empty) {
            see = b.see(opponent, moveTo(m), moveFrom(m), movePromotion(m));
            order = see >= 0 ? see + OrderGoodCapture : see;
        }
        if (wasFollowing && m == pvMove) {
            followPv = true;
            order += OrderPvMove;
        }
        if (m == hashMove) {
            order += OrderPvMove;
        } else if (byRootNodes) {
            order += static_cast<int>(rootMoveNodes[i] / 100);
        } else {
            order += b.history[b.squares[moveFrom(m)]][moveTo(m)];
            if (m == killer1) {
                order += OrderKiller1;
            } else if (m == killer2) {
                order += OrderKiller2;
            }
        }
        frame.orderScores[i] = order;
        frame.seeValues[i] = see;
    }
}

Move Searcher::pickMove(Frame& frame, int& index) {
    constexpr int Picked = -1'000'000;  // overwrites the score of a picked move
    int best = Picked;
    int bestAt = -1;
    for (int i = 0; i < frame.count; ++i) {
        if (frame.orderScores[i] > best) {
            best = frame.orderScores[i];
            bestAt = i;
        }
    }
    if (bestAt < 0) return NoMove;
    frame.orderScores[bestAt] = Picked;
    index = bestAt;
    return frame.moves[bestAt];
}

}  // namespace brivok
