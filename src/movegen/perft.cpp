#include "movegen/perft.h"

#include <algorithm>

#include "movegen/legal_moves.h"

namespace brivok {

namespace {

void perftLevel(Board& board, std::size_t level, std::size_t depth, PerftNodes& perftNodes) {
    MoveList list;
    const bool wasInCheck = generateForPosition(board, list);
    const int count = board.moveCount;
    for (int i = 0; i < count; ++i) {
        board.makeMove(list[i]);
        if (wasInCheck || !board.moverInCheck()) {
            ++perftNodes[level];
            if (level < depth) perftLevel(board, level + 1, depth, perftNodes);
        }
        board.unmakeMove();
    }
}

}  // namespace

PerftNodes countPerft(Board& board, std::size_t depth) {
    PerftNodes perftNodes{};
    perftLevel(board, 1, std::min(depth, MaxPerftDepth), perftNodes);
    return perftNodes;
}

}  // namespace brivok
