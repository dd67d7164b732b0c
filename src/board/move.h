#pragma once

#include <cstdint>

#include "board/types.h"

namespace brivok {

/// A move with everything that making and unmaking it needs, packed into 32 bits; 0 is no move.
/// Moves are compared as whole values, so every field is filled in one way only.
using Move = std::uint32_t;

/// No move.
inline constexpr Move NoMove = 0;

/// Place of a field within a Move.
struct MoveField {
    unsigned shift;  ///< its lowest bit
    unsigned width;  ///< in bits

    /// The value of the field in a move.
    [[nodiscard]] constexpr std::uint32_t get(Move move) const {
        return (move >> shift) & ((1U << width) - 1U);
    }
    /// A move that has this value in the field and nothing else. The value must fit.
    [[nodiscard]] constexpr Move put(std::uint32_t value) const { return value << shift; }
};

namespace field {
inline constexpr MoveField Origen{0, 6};      ///< from-square
inline constexpr MoveField Destino{6, 6};     ///< to-square
inline constexpr MoveField Pieza{12, 4};      ///< moving piece; the pawn's code when it promotes
inline constexpr MoveField Captura{16, 4};    ///< captured piece, 0 if none; the pawn in passing
inline constexpr MoveField Promocion{20, 4};  ///< piece promoted to, 0 if none
inline constexpr MoveField AlPaso{24, 1};     ///< en-passant capture
inline constexpr MoveField MovDobleP{25, 1};  ///< double push, as non-captures are generated
inline constexpr MoveField Enroque{26, 2};    ///< 0 none, 1 king side, 2 queen side
}  // namespace field

/// Bits that no Move uses.
inline constexpr Move UnusedMoveBits = 0xF0000000;

/// Kinds of castling as a Move holds them.
enum Castle : std::uint32_t { NoCastling = 0, KingSide = 1, QueenSide = 2 };

/// The square that the man comes from.
[[nodiscard]] constexpr Square moveFrom(Move m) {
    return static_cast<Square>(field::Origen.get(m));
}
/// The square that the man goes to.
[[nodiscard]] constexpr Square moveTo(Move m) { return static_cast<Square>(field::Destino.get(m)); }
/// The man that moves: the pawn, when it promotes.
[[nodiscard]] constexpr Piece movePiece(Move m) { return static_cast<Piece>(field::Pieza.get(m)); }
/// The man that is taken, also in passing; Empty if none.
[[nodiscard]] constexpr Piece moveCapture(Move m) {
    return static_cast<Piece>(field::Captura.get(m));
}
/// The piece that a pawn becomes; Empty if it stays a pawn.
[[nodiscard]] constexpr Piece movePromotion(Move m) {
    return static_cast<Piece>(field::Promocion.get(m));
}
/// The move is an en-passant capture.
[[nodiscard]] constexpr bool moveIsEnPassant(Move m) { return field::AlPaso.get(m) != 0; }
/// What of Castle the move is.
[[nodiscard]] constexpr std::uint32_t moveCastle(Move m) { return field::Enroque.get(m); }

/// A plain move or capture of `piece`.
[[nodiscard]] constexpr Move makePlainMove(Square from, Square to, Piece piece,
                                           Piece captured = Empty) {
    return field::Origen.put(static_cast<std::uint32_t>(from)) |
           field::Destino.put(static_cast<std::uint32_t>(to)) | field::Pieza.put(piece) |
           field::Captura.put(captured);
}

}  // namespace brivok
