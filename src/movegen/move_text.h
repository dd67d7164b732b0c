#pragma once

#include <string>
#include <string_view>

#include "board/board.h"

namespace brivok {

/// Standard algebraic notation of a move of this position, before it is made; "xxxx" for no move
/// and for an illegal one. Only the first rival of a piece decides how it is told apart. Makes and
/// unmakes moves on the board.
[[nodiscard]] std::string moveToSan(Board& board, Move move);

/// The legal move whose coordinate text equals the word, or 0.
[[nodiscard]] Move parseMove(Board& board, std::string_view text);

}  // namespace brivok
