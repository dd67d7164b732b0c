#include "movegen/move_text.h"

#include "board/coordinate.h"
#include "movegen/legal_moves.h"

namespace brivok {

Move parseMove(Board& board, std::string_view text) {
    if (!IsMoveText(text)) return NoMove;
    Move found = NoMove;
    forEachLegalMove(
        board, [&](Move move) { found = move; },
        [&](Move move) { return moveToCoordinate(move) == text; });
    return found;
}

}  // namespace brivok
