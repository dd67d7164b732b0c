#pragma once

#include <string_view>

#include "board/board.h"

namespace brivok {

/// Sets the position of a FEN or EPD line. Throws AppError at one that cannot be played from.
void setUpPosition(Board& board, std::string_view fen);

/// Plays moves that stand between blanks, in any notation that readSan() takes; numbers of moves
/// among them are skipped. Throws AppError at the first that cannot be played.
void playLine(Board& board, std::string_view moves);

}  // namespace brivok
