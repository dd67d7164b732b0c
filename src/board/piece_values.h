#pragma once

#include <array>

#include "board/types.h"

namespace brivok {

/// King entry of `pieceValue`: high enough that an exchange never gives up the king.
inline constexpr int KingValue = 50000;

/// Centipawns by piece code, the same for both colours; 0 for the empty square.
/// RefreshPieceValues() derives it from the settings.
inline std::array<int, PieceCodes> pieceValue{};

/// Weight of a piece in the game phase, by piece code: minors 3, rook 5, queen 9. Each side starts
/// the game with 31.
inline constexpr std::array<int, PieceCodes> phaseWeight{0, 0, 0, 3, 3, 0, 0, 5, 5, 9, 9, 3, 3, 0};

/// By piece code, for trades of minor against major pieces, from White's view: a black man's weight
/// is negative. A queen counts as two majors.
inline constexpr std::array<int, PieceCodes> minorWeight{0, 0, 0, 1, -1, 0,  0,
                                                         0, 0, 0, 0, 1,  -1, 0};
inline constexpr std::array<int, PieceCodes> majorWeight{0, 0,  0, 0,  0, 0, 0,
                                                         1, -1, 2, -2, 0, 0, 0};

/// Derives `pieceValue` from the five piece settings. An existing position keeps the `material`
/// summed from the old values until it is recomputed.
void RefreshPieceValues();

}  // namespace brivok
