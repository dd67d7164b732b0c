#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "board/types.h"

/// @file
/// Tables of move geometry, built once at start and then constant. Those of castling belong to a
/// board: see castling.h.
///
/// Sliding attacks use rotated bitboards (Hyatt, "Rotated bitmaps, a new twist on an old idea",
/// ICGA Journal 22/4, 1999): the occupancy is kept in four bit orders in which the squares of a
/// line are adjacent, so that one shift and one mask give the index of a precomputed attack set.
namespace brivok {

inline constexpr int Squares = 64;  ///< of the board

/// Same file, opposite rank: the square in the numbering of the endgame tables (a1 = 0).
extern std::uint32_t mirrorSquare[Squares];

/// Squares on the neighbouring files strictly ahead of a square of rank 2 to 7, by side: a man
/// there is safe from enemy pawns when none stands on them. 0 on the first and last rank.
extern Bitboard outpostGuardMask[2][Squares];

/// Code of the step that leads from the first square to the second along a line: 1 north-east,
/// 2 east, 3 south-east, 4 south, 5 south-west, 6 west, 7 north-west, 8 north; 0 without a line.
extern std::uint32_t direction[Squares][Squares];

/// The step of each direction code.
inline constexpr int StepOfDirection[9] = {0,         NorthEast, East,      SouthEast, South,
                                           SouthWest, West,      NorthWest, North};

/// Squares strictly between two squares of a line; empty if adjacent or on no common line.
extern Bitboard between[Squares][Squares];

extern Bitboard knightAttacks[Squares];  ///< squares that a knight attacks
extern Bitboard kingAttacks[Squares];    ///< squares that a king attacks

/// Squares that a pawn on the square attacks. Read the other way round, whitePawnAttacks[sq] are
/// the squares from which a black pawn attacks sq.
extern Bitboard whitePawnAttacks[Squares];
extern Bitboard blackPawnAttacks[Squares];  ///< the same for Black

/// The squares that a pawn of S on the square attacks.
template <Side S>
[[nodiscard]] inline Bitboard pawnAttacks(Square sq) {
    return S == White ? whitePawnAttacks[sq] : blackPawnAttacks[sq];
}

/// First bit of the square's diagonal in the rotated board, and the mask of its length.
extern std::uint32_t diagNEShift[Squares];
extern std::uint32_t diagSEShift[Squares];  ///< first bit of the other diagonal
extern std::uint32_t diagNEMask[Squares];   ///< mask of the first
extern std::uint32_t diagSEMask[Squares];   ///< mask of the other

/// The one bit of a square in each rotated form, and its complement.
extern Bitboard rot90Set[Squares];
extern Bitboard diagNESet[Squares];    ///< in the north-east form
extern Bitboard diagSESet[Squares];    ///< in the south-east form
extern Bitboard rot90Clear[Squares];   ///< all but the bit of rot90Set
extern Bitboard diagNEClear[Squares];  ///< all but the bit of diagNESet
extern Bitboard diagSEClear[Squares];  ///< all but the bit of diagSESet

/// Attack sets by square and occupancy of the line: outwards up to and including the first
/// occupied square of whatever colour. Rank and file are indexed by the six inner bits.
extern Bitboard rankAttacks[Squares][64];
extern Bitboard fileAttacks[Squares][64];     ///< along the file
extern Bitboard diagNEAttacks[Squares][256];  ///< along the diagonal that runs north-east
extern Bitboard diagSEAttacks[Squares][256];  ///< along the diagonal that runs south-east

/// Number of squares in the attack set of the same index.
extern std::uint8_t rankMoveCount[Squares][64];
extern std::uint8_t fileMoveCount[Squares][64];  ///< along the file

/// Attacks on an empty board.
extern Bitboard rookEmptyAttacks[Squares];
extern Bitboard bishopEmptyAttacks[Squares];  ///< of a bishop
extern Bitboard queenEmptyAttacks[Squares];   ///< of a queen

/// Builds every table; to be called once, before any Board operation but the constructor.
void buildStaticTables();

/// A normal set of squares in each of the rotated bit orders, bit by bit: for setting positions
/// up, never within a search.
[[nodiscard]] Bitboard rotate90(Bitboard set);
[[nodiscard]] Bitboard rotateDiagNE(Bitboard set);  ///< north-east diagonals adjacent
[[nodiscard]] Bitboard rotateDiagSE(Bitboard set);  ///< south-east diagonals adjacent

}  // namespace brivok
