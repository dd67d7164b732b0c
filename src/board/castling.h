#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "board/types.h"

/// @file
/// The rules of castling: the same targets in every variant, and tables by the home squares of king
/// and rooks, which a Fischer-random game chooses anew.
namespace brivok {

/// Bits of `castling`. The four rights last until a king or rook moves or is taken; the four low
/// bits say that the last move played was this castling, and the next move clears them.
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

/// The four kinds of castling, the index of the castling tables.
enum CastlingKind { WhiteKingSide = 0, WhiteQueenSide = 1, BlackKingSide = 2, BlackQueenSide = 3 };

inline constexpr int CastlingKinds = 4;  ///< of castling

/// The right of a kind of castling.
[[nodiscard]] constexpr std::uint32_t rightOf(int kind) {
    return 16U << static_cast<unsigned>(kind);
}

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
inline constexpr Square CastledKing[CastlingKinds] = {squareNamed("g1"), squareNamed("c1"),
                                                      squareNamed("g8"), squareNamed("c8")};
/// Square of the rook.
inline constexpr Square CastledRook[CastlingKinds] = {squareNamed("f1"), squareNamed("d1"),
                                                      squareNamed("f8"), squareNamed("d8")};

/// Castling by the home squares of one game. A kind whose king or rook is missing has 0 in all of
/// its tables.
struct CastlingTables {
    std::uint32_t castleRightsMask[64]{};       ///< `castling` is anded with it, from and to
    Bitboard castleEmpty[CastlingKinds]{};      ///< squares that must be empty
    Bitboard castleTransit[CastlingKinds]{};    ///< squares not to be attacked, king's own left out
    Bitboard castleXor[CastlingKinds]{};        ///< bits to flip in the mover's `colourOcc`
    Bitboard castleXorRot90[CastlingKinds]{};   ///< the same in the rotated forms
    Bitboard castleXorDiagNE[CastlingKinds]{};  ///< in the north-east form
    Bitboard castleXorDiagSE[CastlingKinds]{};  ///< in the south-east form

    /// Fills all of them for a game with these homes.
    void buildCastlingTables(const CastlingHomes& homes);
};

}  // namespace brivok
