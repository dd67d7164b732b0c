#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "board/types.h"

namespace brivok {

/// The men of one side, as squares of the table files: a1 = 0, b1 = 1, ... h8 = 63. Three slots
/// each for pawns, knights, bishops, rooks and queens, then the king. Empty slots are never read;
/// the table's signature tells how many are filled.
using PieceList = std::array<std::uint32_t, 16>;

inline constexpr std::size_t SlotsPerType = 3;
inline constexpr std::size_t KingSlot = 15;

/// The kinds of men in slot order.
inline constexpr std::array TableKinds = {Kind::Pawn, Kind::Knight, Kind::Bishop,
                                          Kind::Rook, Kind::Queen,  Kind::King};
inline constexpr std::size_t CountedKinds = TableKinds.size() - 1;  ///< all but the king

/// The index of a kind in TableKinds.
[[nodiscard]] constexpr std::size_t tablePlaceOf(Kind kind) {
    constexpr auto places = [] {
        std::array<std::uint8_t, PieceCodes> byCode{};
        for (std::uint8_t i = 0; const Kind each : TableKinds) {
            byCode[pieceOf(each, White)] = i++;
        }
        return byCode;
    }();
    return places[pieceOf(kind, White)];
}

/// Number of pawns, knights, bishops, rooks and queens: White's, then Black's; or those of a
/// table's first side, then its second.
using PieceCounts = std::array<std::uint8_t, 2 * CountedKinds>;

/// En passant square when there is none.
inline constexpr int NoEnPassant = 127;

}  // namespace brivok
