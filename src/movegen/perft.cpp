#include "movegen/perft.h"

#include <algorithm>

#include "movegen/legal_moves.h"
#include "movegen/legality.h"
#include "movegen/move_count.h"

namespace brivok {

namespace {

/// Makes a move that generateForPosition() has written, unless it is illegal.
bool makeGenerated(Board& board, const Legality& legality, bool evasion, Move move) {
    if (!evasion) return makeIfLegal(board, legality, move);
    board.makeMove(move);
    return true;
}

void perftLevel(Board& board, std::size_t level, std::size_t depth, PerftNodes& perftNodes) {
    const Legality legality(board);
    MoveList list;
    const bool wasInCheck = generateForPosition(board, list);
    for (const Move move : generated(board, list)) {
        if (!makeGenerated(board, legality, wasInCheck, move)) continue;
        ++perftNodes[level];
        if (level < depth) perftLevel(board, level + 1, depth, perftNodes);
        board.unmakeMove();
    }
}

/// Counts what perftLevel() makes: in check the evasions, else the moves that leave the king safe.
std::uint64_t leavesBelow(Board& board, std::size_t depth) {
    const Legality legality(board);
    if (depth == 1 && legality.known() && !legality.inCheck()) {
        return static_cast<std::uint64_t>(countMoves(board, legality));
    }
    MoveList list;
    const bool wasInCheck = generateForPosition(board, list);
    if (depth == 1 && wasInCheck) return generated(board, list).size();
    std::uint64_t leaves = 0;
    for (const Move move : generated(board, list)) {
        if (!makeGenerated(board, legality, wasInCheck, move)) continue;
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
