#pragma once

#include <string_view>

#include "board/board.h"

namespace brivok {

/// The legal move whose coordinate text equals the word, or 0.
[[nodiscard]] Move parseMove(Board& board, std::string_view text);

}  // namespace brivok
