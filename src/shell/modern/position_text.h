#pragma once

#include <string>
#include <string_view>

#include "board/board.h"

namespace brivok {

/// Sets up a position from a FEN with castling rights as KQkq, X-FEN or files (HAha). Returns an
/// empty text, or what is wrong with the FEN; the board is then as before. A success is also a new
/// game: it resets the clocks, like Board::setPositionFromFen().
[[nodiscard]] std::string setUpPosition(Board& board, std::string_view fen);

}  // namespace brivok
