#pragma once

#include <string_view>

#include "board/board.h"

namespace brivok {

/// The legal move with this coordinate text, or NoMove.
[[nodiscard]] Move parseMove(Board& board, std::string_view text);

}  // namespace brivok
