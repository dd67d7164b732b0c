#pragma once

#include <cstdint>

#include "board/types.h"

namespace brivok {

/// A move packed into 32 bits, with all that making and unmaking it requires. Moves are compared as
/// whole words, so each field has only one valid encoding.
using Move = std::uint32_t;

inline constexpr Move NoMove = 0;

/// Position of a field within a Move.
struct MoveField {
    unsigned shift;  ///< lowest bit
    unsigned width;  ///< bits

    [[nodiscard]] constexpr std::uint32_t get(Move move) const {
        return (move >> shift) & ((1U << width) - 1U);
    }
    /// A Move with only this field set. The value must fit.
    [[nodiscard]] constexpr Move put(std::uint32_t value) const { return value << shift; }
};

namespace field {
inline constexpr MoveField Origen{0, 6};
inline constexpr MoveField Destino{6, 6};
inline constexpr MoveField Pieza{12, 4};      ///< moving piece; a pawn when it promotes
inline constexpr MoveField Captura{16, 4};    ///< captured piece, 0 if none; a pawn for en passant
inline constexpr MoveField Promocion{20, 4};  ///< piece promoted to, 0 if none
inline constexpr MoveField AlPaso{24, 1};
inline constexpr MoveField MovDobleP{25, 1};  ///< double push; set only by generateNonCaptures()
inline constexpr MoveField Enroque{26, 2};    ///< 0 none, 1 king side, 2 queen side
}  // namespace field

inline constexpr Move UnusedMoveBits = 0xF0000000;

/// Values of `field::Enroque`.
enum Castle : std::uint32_t { NoCastling = 0, KingSide = 1, QueenSide = 2 };

[[nodiscard]] constexpr Square moveFrom(Move m) {
    return static_cast<Square>(field::Origen.get(m));
}
[[nodiscard]] constexpr Square moveTo(Move m) { return static_cast<Square>(field::Destino.get(m)); }
/// The moving piece; a pawn when it promotes.
[[nodiscard]] constexpr Piece movePiece(Move m) { return static_cast<Piece>(field::Pieza.get(m)); }
/// The captured piece, including en passant; Empty if none.
[[nodiscard]] constexpr Piece moveCapture(Move m) {
    return static_cast<Piece>(field::Captura.get(m));
}
/// Empty if the move is not a promotion.
[[nodiscard]] constexpr Piece movePromotion(Move m) {
    return static_cast<Piece>(field::Promocion.get(m));
}
[[nodiscard]] constexpr bool moveIsEnPassant(Move m) { return field::AlPaso.get(m) != 0; }
/// A value of Castle.
[[nodiscard]] constexpr std::uint32_t moveCastle(Move m) { return field::Enroque.get(m); }

/// A plain move or capture of `piece`.
[[nodiscard]] constexpr Move makePlainMove(Square from, Square to, Piece piece,
                                           Piece captured = Empty) {
    return field::Origen.put(static_cast<std::uint32_t>(from)) |
           field::Destino.put(static_cast<std::uint32_t>(to)) | field::Pieza.put(piece) |
           field::Captura.put(captured);
}

}  // namespace brivok
