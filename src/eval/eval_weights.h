#pragma once

#include <cstdint>

#include "board/square_values.h"

/// The numbers of the evaluation, in centipawns, but for the tables of the pieces by square, which
/// are in board/square_values.h. Penalties are positive numbers that are subtracted.
namespace brivok::weights {

// --- Material and development ---------------------------------------------------------------

/// The position is an endgame if either side has this much phase or less.
inline constexpr int EndgamePhase = 14;
/// If both sides have at most this much phase, material imbalance is ignored.
inline constexpr int BareTradePhase = 3;

inline constexpr int ImbalanceMajor = 120;  ///< a surplus that counts as winning
inline constexpr int ImbalanceQueen = 60;   ///< queen against two rooks
inline constexpr int ImbalanceMinor = 30;   ///< a major piece against one extra minor piece

inline constexpr int BlockedCentrePawn = 5;  ///< an unmoved d- or e-pawn with a man in front of it
/// The c-pawn blocked by its own knight, with pawns on d4 and d5.
inline constexpr int BlockedQueensGambit = 5;

/// An early queen move, by the queen's square.
inline constexpr SquareTable queenDevelopmentTable{
    // clang-format off
    -200, -200,    0,    0,    0,    0, -200, -200,
    -200, -200,   10,   10,   10,   10, -200, -200,
    -200, -200,    0,    0,    0,    0, -200, -200,
    -200, -200,    0,    0,    0,    0, -200, -200,
    -200, -200,    0,    0,    0,    0, -200, -200,
    -200, -200,    0,    0,    0,    0, -200, -200,
    -200, -200,   10,   10,   10,   10, -200, -200,
    -200, -200,    0,    0,    0,    0, -200, -200,
    // clang-format on
};

// --- Pawns ----------------------------------------------------------------------------------

inline constexpr int BackwardPawn = 5;        ///< penalty
inline constexpr int BackwardOnOpenFile = 4;  ///< on top of BackwardPawn
inline constexpr int IsolatedPawn = 3;        ///< on top of the backward pawn terms
inline constexpr int IsolatedOnOpenFile = 8;  ///< on top of IsolatedPawn
/// Per pair of a pawn and another own pawn on its file.
inline constexpr int DoubledPawn = 2;
/// How many more times the table value counts for a passed pawn.
inline constexpr int PassedTableFactor = 2;
/// A passed pawn with a neighbour on an adjacent file.
inline constexpr int PassedNotIsolated = 15;

inline constexpr SquareTable pawnTable{
    // clang-format off
     0,  0,  0,  0,  0,  0,  0,  0,
    12, 15, 18, 21, 21, 18, 15, 12,
     9, 12, 15, 18, 18, 15, 12,  9,
     6,  9, 14, 17, 17, 14,  9,  6,
     3,  6, 11, 15, 15, 11,  6,  3,
     0,  3,  8, 11, 11,  8,  3,  0,
     0,  0,  0,  0,  0,  0,  0,  0,
     0,  0,  0,  0,  0,  0,  0,  0,
    // clang-format on
};

// --- Patterns of pieces ---------------------------------------------------------------------

/// By the number of rooks and queens on the last two ranks while the enemy king stands there.
inline constexpr std::int16_t heavyOnSeventhTable[4]{0, 25, 100, 300};

inline constexpr int TrappedBishop = 180;  ///< penalty

/// By the number of pawns on the board; the last value also covers higher numbers.
inline constexpr std::int16_t bishopPairTable[8]{60, 60, 60, 60, 55, 40, 35, 30};

inline constexpr int PawnOnBishopColour = 4;  ///< penalty per pawn

// --- Pieces ---------------------------------------------------------------------------------

/// By the number of squares attacked on rank and file.
inline constexpr std::int16_t rookMobilityTable[15]{-15, -10, -5, 0, 1, 2, 3, 4,
                                                    6,   6,   7,  7, 8, 8, 9};
inline constexpr int RookOnHalfOpenFile = 8;  ///< no own pawn on the file
inline constexpr int RookOnOpenFile = 3;      ///< no pawn at all on the file
/// On top of RookOnOpenFile, for one of the two rooks.
inline constexpr int RookDoubledOnOpenFile = 10;

inline constexpr int BishopMobilitySquare = 3;  ///< per square

/// Outposts of knights and bishops; 0 where there is none. The value doubles if a pawn guards the
/// square.
inline constexpr SquareTable outpostTable{
    // clang-format off
    0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 1, 2, 2, 1, 0, 0,
    0, 0, 3, 6, 6, 3, 0, 0,
    0, 0, 2, 5, 5, 2, 0, 0,
    0, 0, 0, 2, 2, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0,
    // clang-format on
};
inline constexpr int KnightOutpost = 3;  ///< added to the table value for a knight

// --- Kings ----------------------------------------------------------------------------------

/// Fibonacci numbers by distance from the first rank, better in the corners.
inline constexpr SquareTable kingMiddlegameTable{
    // clang-format off
    -55, -55, -89, -89, -89, -89, -55, -55,
    -34, -34, -55, -55, -55, -55, -34, -34,
    -21, -21, -34, -34, -34, -34, -21, -21,
    -13, -13, -21, -21, -21, -21, -13, -13,
     -8,  -8, -13, -13, -13, -13,  -8,  -8,
     -5,  -5,  -8,  -8,  -8,  -8,  -5,  -5,
     -3,  -5,  -6,  -6,  -6,  -6,  -5,  -3,
      2,  14,   0,   0,   0,   0,  14,   2,
    // clang-format on
};

inline constexpr SquareTable kingEndgameTable{
    // clang-format off
    -5, -3, -1,  0,  0, -1, -3, -5,
    -3, 10, 10, 10, 10, 10, 10, -3,
    -1, 10, 25, 25, 25, 25, 10, -1,
     0, 10, 25, 30, 30, 25, 10,  0,
     0, 10, 25, 30, 30, 25, 10,  0,
    -1, 10, 25, 25, 25, 25, 10, -1,
    -3, 10, 10, 10, 10, 10, 10, -3,
    -5, -3, -1,  0,  0, -1, -3, -5,
    // clang-format on
};

inline constexpr int JustCastledKingSide = 24;   ///< castled with the last move
inline constexpr int JustCastledQueenSide = 20;  ///< castled with the last move
/// Off its start square, with an own pawn on its file.
inline constexpr int KingMoved = 7;
/// Off its start square, with no own pawn on its file.
inline constexpr int KingMovedToOpenFile = 15;

/// Pawn shelter: per row that the file's pawn is further away than one step.
inline constexpr int ShelterKingFile = 8;
inline constexpr int ShelterNextFile = 7;  ///< on the files next to the king's
inline constexpr int ShelterMissing = 12;  ///< no pawn on the file in front of the king

/// Pawn storm: with the kings at least this many files apart, own pawns advance on the enemy king.
inline constexpr int StormKingDistance = 3;
inline constexpr int StormStartRows = 18;    ///< sum of the rows of three pawns on the second rank
inline constexpr int StormRow = 3;           ///< per row that a pawn has advanced
inline constexpr int StormOpenKingFile = 8;  ///< no own pawn on the enemy king's file
inline constexpr int StormOpenNextFile = 6;  ///< no own pawn on a file next to it

}  // namespace brivok::weights
