#pragma once

#include <string>
#include <string_view>

#include "board/move.h"

namespace brivok {

/// As in "e4".
[[nodiscard]] std::string squareName(Square sq);

/// Coordinate text: "e2e4", "e7e8q". Castling is "O-O" or "O-O-O" in Fischer-random chess,
/// otherwise the king's move. NoMove gives "a8a8".
[[nodiscard]] std::string moveToCoordinate(Move move);

/// Whether the word has the shape of a coordinate move; only the class of each character is tested.
[[nodiscard]] bool IsMoveText(std::string_view text);

}  // namespace brivok
