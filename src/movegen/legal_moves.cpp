#include "movegen/legal_moves.h"

#include <algorithm>

namespace brivok {

bool generateForPosition(Board& board, Move* list) {
    const bool inCheck = board.inCheck();
    if (inCheck) {
        generateEvasions(board, list);
    } else {
        generateMoves(board, list);
    }
    return inCheck;
}

bool leavesKingSafe(Board& board, Move move) {
    board.makeMove(move);
    const bool safe = !board.moverInCheck();
    board.unmakeMove();
    return safe;
}

bool isLegalMove(Board& board, Move move) {
    if (move == NoMove) return false;
    MoveList list;
    generateForPosition(board, list);
    Move* const end = list + board.moveCount;
    return std::find(list, end, move) != end && leavesKingSafe(board, move);
}

int countLegalMoves(Board& board) {
    int count = 0;
    forEachLegalMove(board, [&](Move) { ++count; });
    return count;
}

int countLegalInList(Board& board, const Move* moves, int count, int& lastLegal) {
    int legal = 0;
    for (int i = 0; i < count; ++i) {
        if (!leavesKingSafe(board, moves[i])) continue;
        ++legal;
        lastLegal = i;
    }
    return legal;
}

}  // namespace brivok
