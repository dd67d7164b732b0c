#pragma once

#include "hash/transposition_table.h"

namespace brivok {

/// Scores are in centipawns from the side to move. Being mated at search ply p scores p -
/// MateScore; scores beyond MateBound (hash/transposition_table.h) are mates.
inline constexpr int DrawScore = 0;
inline constexpr int MateScore = 32767;  ///< of a mate at ply 0

/// Moves until the side to move mates, for a score above MateBound.
[[nodiscard]] constexpr int movesToMate(int score) { return (MateScore + 1 - score) / 2; }

}  // namespace brivok
