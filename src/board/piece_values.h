#pragma once

#include <array>

#include "board/types.h"

namespace brivok {

/// Value of the king in `pieceValue`: high enough that the exchange evaluator never trades it.
inline constexpr int KingValue = 50000;

/// Centipawns by piece code, both colours alike; derived from the settings by
/// RefreshPieceValues(). The empty square is worth 0.
inline std::array<int, PieceCodes> pieceValue{};

/// Weight of a piece in the game phase, by piece code: minors 3, rook 5, queen 9. One side has 31
/// at the start of a game.
inline constexpr std::array<int, PieceCodes> phaseWeight{0, 0, 0, 3, 3, 0, 0, 5, 5, 9, 9, 3, 3, 0};

/// Derives `pieceValue` from the five piece settings. Positions already set keep the `material`
/// that was summed from the old values until it is recomputed.
void RefreshPieceValues();

}  // namespace brivok
