#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "board/types.h"

/// @file
/// Tables of move geometry. All but the castling tables are built once at start and then constant.
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

/// The four kinds of castling, the index of the castling tables.
enum CastlingKind { WhiteKingSide = 0, WhiteQueenSide = 1, BlackKingSide = 2, BlackQueenSide = 3 };

/// Castling by the home squares of the present game. A kind whose king or rook is missing has 0
/// in all of its tables.
extern std::uint32_t castleRightsMask[Squares];  ///< `castling` is anded with it, from and to
extern Bitboard castleEmpty[4];                  ///< squares that must be empty
extern Bitboard castleTransit[4];    ///< squares that must not be attacked, king's own left out
extern Bitboard castleXor[4];        ///< bits to flip in the mover's `colourOcc`
extern Bitboard castleXorRot90[4];   ///< the same in the rotated forms
extern Bitboard castleXorDiagNE[4];  ///< in the north-east form
extern Bitboard castleXorDiagSE[4];  ///< in the south-east form

/// Home squares of kings and castling rooks, MissingHome where there is none.
struct CastlingHomes {
    Square whiteQueenRook;  ///< White's rook towards the a-file
    Square whiteKing;       ///< White's king
    Square whiteKingRook;   ///< White's rook towards the h-file
    Square blackQueenRook;  ///< Black's rook towards the a-file
    Square blackKing;       ///< Black's king
    Square blackKingRook;   ///< Black's rook towards the h-file
};

/// The homes of normal chess.
inline constexpr CastlingHomes StandardHomes{squareNamed("a1"), squareNamed("e1"),
                                             squareNamed("h1"), squareNamed("a8"),
                                             squareNamed("e8"), squareNamed("h8")};

/// Where king and rook stand after castling, by kind; the same in every variant.
inline constexpr Square CastledKing[4] = {squareNamed("g1"), squareNamed("c1"), squareNamed("g8"),
                                          squareNamed("c8")};
/// Square of the rook.
inline constexpr Square CastledRook[4] = {squareNamed("f1"), squareNamed("d1"), squareNamed("f8"),
                                          squareNamed("d8")};

/// Builds every table; to be called once, before any Board operation but the constructor.
void buildStaticTables();

/// Rebuilds the castling tables; they stay in force until the next call.
void buildCastlingTables(const CastlingHomes& homes);

/// A normal set of squares in each of the rotated bit orders, bit by bit: for setting positions
/// up, never within a search.
[[nodiscard]] Bitboard rotate90(Bitboard set);
[[nodiscard]] Bitboard rotateDiagNE(Bitboard set);  ///< north-east diagonals adjacent
[[nodiscard]] Bitboard rotateDiagSE(Bitboard set);  ///< south-east diagonals adjacent

}  // namespace brivok
