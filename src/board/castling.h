#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "board/types.h"

/// @file
/// The rules of castling. King and rook end on the same squares in every variant; the tables depend
/// on their home squares, which vary in Fischer-random chess.
namespace brivok {

/// Bits of `castling`. The four rights last until the king or rook moves or is captured. The four
/// low bits say that the last move was this castling; the next move clears them.
enum CastlingBits : std::uint32_t {
    WhiteCastledKingSide = 1,
    WhiteCastledQueenSide = 2,
    BlackCastledKingSide = 4,
    BlackCastledQueenSide = 8,
    WhiteMayKingSide = 16,
    WhiteMayQueenSide = 32,
    BlackMayKingSide = 64,
    BlackMayQueenSide = 128,
    WhiteRights = WhiteMayKingSide | WhiteMayQueenSide,
    BlackRights = BlackMayKingSide | BlackMayQueenSide,
    AllRights = WhiteRights | BlackRights
};

/// The four kinds of castling; the index of the castling tables.
enum CastlingKind { WhiteKingSide = 0, WhiteQueenSide = 1, BlackKingSide = 2, BlackQueenSide = 3 };

inline constexpr int CastlingKinds = 4;

/// The right of a kind of castling.
[[nodiscard]] constexpr std::uint32_t rightOf(int kind) {
    return 16U << static_cast<unsigned>(kind);
}

/// Home squares of kings and castling rooks; MissingHome if there is none.
struct CastlingHomes {
    Square whiteQueenRook;
    Square whiteKing;
    Square whiteKingRook;
    Square blackQueenRook;
    Square blackKing;
    Square blackKingRook;
};

inline constexpr CastlingHomes StandardHomes{squareNamed("a1"), squareNamed("e1"),
                                             squareNamed("h1"), squareNamed("a8"),
                                             squareNamed("e8"), squareNamed("h8")};

/// Where the king ends up after castling, by kind.
inline constexpr Square CastledKing[CastlingKinds] = {squareNamed("g1"), squareNamed("c1"),
                                                      squareNamed("g8"), squareNamed("c8")};
/// Where the rook ends up after castling, by kind.
inline constexpr Square CastledRook[CastlingKinds] = {squareNamed("f1"), squareNamed("d1"),
                                                      squareNamed("f8"), squareNamed("d8")};

/// Castling tables for the home squares of one game. If the king or rook of a kind is missing, all
/// its entries are 0.
struct CastlingTables {
    /// ANDed into `castling` for both squares of a move.
    std::uint32_t castleRightsMask[64]{};
    Bitboard castleEmpty[CastlingKinds]{};  ///< squares that must be empty
    /// Squares that must not be attacked, the king's own excluded.
    Bitboard castleTransit[CastlingKinds]{};
    Bitboard castleXor[CastlingKinds]{};        ///< bits to flip in the mover's `colourOcc`
    Bitboard castleXorRot90[CastlingKinds]{};   ///< bits to flip in `occRot90`
    Bitboard castleXorDiagNE[CastlingKinds]{};  ///< bits to flip in `occDiagNE`
    Bitboard castleXorDiagSE[CastlingKinds]{};  ///< bits to flip in `occDiagSE`

    void buildCastlingTables(const CastlingHomes& homes);
};

}  // namespace brivok
