#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "board/board.h"

namespace brivok {

inline constexpr std::size_t MaxPerftDepth = 15;  ///< plies

/// Legal positions by distance from the root; entry 0 is unused.
using PerftNodes = std::array<std::uint32_t, MaxPerftDepth + 1>;

/// Counts the legal move tree to `depth` plies (at most MaxPerftDepth) as the search walks it:
/// evasions in check, else the pseudo-legal moves that leave the king safe. No hashing and no bulk
/// counting: every leaf is made and unmade.
[[nodiscard]] PerftNodes countPerft(Board& board, std::size_t depth);

/// Number of leaves at `depth` plies, at least 1. The last ply is only counted: no leaf is made.
[[nodiscard]] std::uint64_t countLeaves(Board& board, std::size_t depth);

}  // namespace brivok
