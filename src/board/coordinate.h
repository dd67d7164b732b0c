#pragma once

#include <string>
#include <string_view>

#include "board/move.h"

namespace brivok {

/// The file letter and rank number of a square.
[[nodiscard]] std::string squareName(Square sq);

/// Coordinate text: "e2e4", "e7e8q"; castling is "O-O" and "O-O-O" in Fischer-random chess and the
/// king's move otherwise. No move (0) reads "a8a8".
[[nodiscard]] std::string moveToCoordinate(Move move);

/// The word has the shape of a coordinate move, by classes of characters alone.
[[nodiscard]] bool IsMoveText(std::string_view text);

}  // namespace brivok
