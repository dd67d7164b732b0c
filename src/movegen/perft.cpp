#include "movegen/perft.h"

#include <algorithm>

#include "movegen/legal_moves.h"

namespace brivok {

namespace {

void perftLevel(Board& board, int level, int depth, PerftNodes& perftNodes) {
    MoveList list;
    const bool wasInCheck = generateForPosition(board, list);
    const int count = board.moveCount;
    for (int i = 0; i < count; ++i) {
        board.makeMove(list[i]);
        if (wasInCheck || !board.moverInCheck()) {
            ++perftNodes[static_cast<unsigned>(level)];
            if (level < depth) perftLevel(board, level + 1, depth, perftNodes);
        }
        board.unmakeMove();
    }
}

}  // namespace

PerftNodes countPerft(Board& board, int depth) {
    PerftNodes perftNodes{};
    perftLevel(board, 1, std::min(depth, MaxPerftDepth), perftNodes);
    return perftNodes;
}

}  // namespace brivok
