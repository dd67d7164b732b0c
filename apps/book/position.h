#pragma once

#include <string_view>

#include "board/board.h"

namespace brivok {

/// Sets the position of a FEN or EPD line. Throws AppError if it cannot be played from.
void setPositionOrThrow(Board& board, std::string_view fen);

/// Plays moves separated by blanks, in any notation that readSan() accepts; move numbers are
/// skipped. Throws AppError at the first illegal move.
void playLine(Board& board, std::string_view moves);

}  // namespace brivok
