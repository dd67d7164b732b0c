#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "board/types.h"

/// @file
/// Tables of move geometry, built once at start-up and constant from then on. The castling tables
/// belong to a board: see castling.h.
///
/// Sliding attacks use rotated bitboards (Hyatt, "Rotated bitmaps, a new twist on an old idea",
/// ICGA Journal 22/4, 1999): the occupancy is kept in four bit orders, in each of which the squares
/// of some line are adjacent, so that a shift and a mask give the index of a precomputed attack
/// set.
namespace brivok {

inline constexpr int Squares = 64;

/// The square in the numbering of the endgame tables (a1 = 0): same file, opposite rank.
extern std::uint32_t mirrorSquare[Squares];

/// For a square of rank 2 to 7, by side: the squares strictly ahead on the neighbouring files. With
/// no enemy pawn on them, no enemy pawn can attack a man on the square. 0 on the first and last
/// rank.
extern Bitboard outpostGuardMask[2][Squares];

/// Direction code of the line from the first square to the second: 1 north-east, 2 east, 3
/// south-east, 4 south, 5 south-west, 6 west, 7 north-west, 8 north; 0 if they share no line.
extern std::uint32_t direction[Squares][Squares];

/// The step for each direction code.
inline constexpr int StepOfDirection[9] = {0,         NorthEast, East,      SouthEast, South,
                                           SouthWest, West,      NorthWest, North};

/// Squares strictly between two squares of a line; empty if they are adjacent or share no line.
extern Bitboard between[Squares][Squares];

/// Squares of a line beyond the second square, seen from the first, up to the edge; empty if they
/// share no line.
extern Bitboard behind[Squares][Squares];

extern Bitboard knightAttacks[Squares];
extern Bitboard kingAttacks[Squares];

/// Squares that a pawn on the square attacks. whitePawnAttacks[sq] is also the set of squares from
/// which a black pawn attacks sq.
extern Bitboard whitePawnAttacks[Squares];
extern Bitboard blackPawnAttacks[Squares];

template <Side S>
[[nodiscard]] inline Bitboard pawnAttacks(Square sq) {
    return S == White ? whitePawnAttacks[sq] : blackPawnAttacks[sq];
}

/// First bit of the square's diagonal in the rotated board.
extern std::uint32_t diagNEShift[Squares];
extern std::uint32_t diagSEShift[Squares];
extern std::uint32_t diagNEMask[Squares];  ///< mask of the diagonal's length
extern std::uint32_t diagSEMask[Squares];

/// The single bit of a square in each rotated form.
extern Bitboard rot90Set[Squares];
extern Bitboard diagNESet[Squares];
extern Bitboard diagSESet[Squares];
extern Bitboard rot90Clear[Squares];   ///< complement of rot90Set
extern Bitboard diagNEClear[Squares];  ///< complement of diagNESet
extern Bitboard diagSEClear[Squares];  ///< complement of diagSESet

/// Attack sets by square and line occupancy: up to and including the first occupied square in each
/// direction, of either colour. Ranks and files are indexed by their six inner bits.
extern Bitboard rankAttacks[Squares][64];
extern Bitboard fileAttacks[Squares][64];
extern Bitboard diagNEAttacks[Squares][256];
extern Bitboard diagSEAttacks[Squares][256];

/// Number of squares in the corresponding attack set.
extern std::uint8_t rankMoveCount[Squares][64];
extern std::uint8_t fileMoveCount[Squares][64];

/// Attacks on an empty board.
extern Bitboard rookEmptyAttacks[Squares];
extern Bitboard bishopEmptyAttacks[Squares];
extern Bitboard queenEmptyAttacks[Squares];

/// Builds every table. Call once, before any Board operation other than the constructor.
void buildStaticTables();

/// Converts a set of squares to a rotated bit order, bit by bit: for setting up positions, not for
/// the search.
[[nodiscard]] Bitboard rotate90(Bitboard set);
[[nodiscard]] Bitboard rotateDiagNE(Bitboard set);
[[nodiscard]] Bitboard rotateDiagSE(Bitboard set);

}  // namespace brivok
