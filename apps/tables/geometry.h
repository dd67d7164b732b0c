#pragma once

#include "board/bitboard.h"
#include "board/types.h"

/// Where men move, on squares numbered as in the table files: a1 = 0 to h8 = 63. Side 0 moves up.
/// Needs buildStaticTables().
namespace brivok::tables {

inline constexpr Bitboard OuterRanks = rowMask[0] | rowMask[7];

/// A side's pawn step, and the home rank of its pawns (0 to 7).
[[nodiscard]] constexpr int pawnStep(unsigned side) { return side == 0 ? 8 : -8; }
[[nodiscard]] constexpr int pawnHome(unsigned side) { return side == 0 ? 1 : 6; }

/// Whether a pawn on the square may have made a double step.
[[nodiscard]] constexpr bool isDoubleStep(unsigned side, Square square) {
    return (square - 2 * pawnStep(side)) >> 3 == pawnHome(side);
}

/// The square reflected in the a1-h8 diagonal.
[[nodiscard]] constexpr Square mirrored(Square square) { return (square & 7) << 3 | square >> 3; }

[[nodiscard]] constexpr bool isSlider(Kind man) {
    return man == Kind::Bishop || man == Kind::Rook || man == Kind::Queen;
}

/// Squares that a pawn attacks. Those of the other side's pawn are the squares from which a pawn of
/// this side attacks the square.
[[nodiscard]] Bitboard pawnTargets(unsigned side, Square square);

/// Squares that a man other than a pawn attacks on an empty board.
[[nodiscard]] Bitboard onEmptyBoard(Kind man, Square square);

/// Squares that a man attacks, including the first man of either colour in its way.
[[nodiscard]] Bitboard attacksOf(Kind man, unsigned side, Square square, Bitboard occupied);

}  // namespace brivok::tables
