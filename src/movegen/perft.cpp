#include "movegen/perft.h"

#include <algorithm>

#include "movegen/legal_moves.h"
#include "movegen/legality.h"
#include "movegen/move_count.h"

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

/// The evasions in check, else the pseudo-legal moves that leave the king safe, as perftLevel()
/// makes them.
std::uint64_t leavesBelow(Board& board, std::size_t depth) {
    const Legality legality(board);
    if (depth == 1 && legality.known() && !legality.inCheck()) {
        return static_cast<std::uint64_t>(countMoves(board, legality));
    }
    MoveList list;
    const bool wasInCheck = generateForPosition(board, list);
    const int count = board.moveCount;
    if (depth == 1 && wasInCheck) return static_cast<std::uint64_t>(count);
    std::uint64_t leaves = 0;
    for (int i = 0; i < count; ++i) {
        if (wasInCheck) {
            board.makeMove(list[i]);
        } else if (!makeIfLegal(board, legality, list[i])) {
            continue;
        }
        leaves += depth == 1 ? 1 : leavesBelow(board, depth - 1);
        board.unmakeMove();
    }
    return leaves;
}

}  // namespace

std::uint64_t countLeaves(Board& board, std::size_t depth) { return leavesBelow(board, depth); }

PerftNodes countPerft(Board& board, std::size_t depth) {
    PerftNodes perftNodes{};
    perftLevel(board, 1, std::min(depth, MaxPerftDepth), perftNodes);
    return perftNodes;
}

}  // namespace brivok
