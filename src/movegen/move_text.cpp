#include "movegen/move_text.h"

#include "board/coordinate.h"
#include "movegen/legal_moves.h"

namespace brivok {

Move parseMove(Board& board, std::string_view text) {
    if (!IsMoveText(text)) return NoMove;
    MoveList list;
    generateForPosition(board, list);
    Move found = NoMove;
    for (int i = 0, count = board.moveCount; i < count; ++i) {
        if (moveToCoordinate(list[i]) == text && leavesKingSafe(board, list[i])) found = list[i];
    }
    return found;
}

}  // namespace brivok
