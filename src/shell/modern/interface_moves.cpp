#include "shell/modern/interface_moves.h"

#include "board/coordinate.h"
#include "movegen/move_text.h"
#include "movegen/san.h"

namespace brivok {

Move readMove(Board& board, std::string_view text) {
    const Move move = parseMove(board, text);
    return move != NoMove ? move : readSan(board, text).move;
}

std::string moveText(const Board& /*board*/, Move move, CastlingStyle /*style*/) {
    return moveToCoordinate(move);
}

}  // namespace brivok
