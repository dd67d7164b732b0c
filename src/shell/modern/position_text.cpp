#include "shell/modern/position_text.h"

namespace brivok {

std::string setUpPosition(Board& board, std::string_view fen) {
    board.setPositionFromFen(fen);
    return "";
}

}  // namespace brivok
