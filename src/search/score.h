#pragma once

#include "hash/transposition_table.h"

namespace brivok {

/// Scores are centipawns from the side to move. A side that is mated at search ply p scores
/// p - MateScore; beyond MateBound all scores are mates.
inline constexpr int DrawScore = 0;
inline constexpr int MateScore = 32767;  ///< of a mate at ply 0

}  // namespace brivok
