#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "board/types.h"

namespace brivok {

/// The men of one side by squares of the table files, a1 = 0, b1 = 1 .. h8 = 63: three slots each
/// for pawns, knights, bishops, rooks and queens, then the king. Empty slots are never read; how
/// many are filled follows from the table's signature.
using PieceList = std::array<std::uint32_t, 16>;

inline constexpr std::size_t SlotsPerType = 3;  ///< of pawns, knights and so on
inline constexpr std::size_t KingSlot = 15;     ///< the last one

/// The kinds of men in the order of the slots.
inline constexpr std::array TableKinds = {Kind::Pawn, Kind::Knight, Kind::Bishop,
                                          Kind::Rook, Kind::Queen,  Kind::King};
inline constexpr std::size_t CountedKinds = TableKinds.size() - 1;  ///< all but the king

/// The place of a kind in TableKinds.
[[nodiscard]] constexpr std::size_t tablePlaceOf(Kind kind) {
    constexpr auto places = [] {
        std::array<std::uint8_t, PieceCodes> byCode{};
        for (std::uint8_t i = 0; const Kind each : TableKinds) {
            byCode[static_cast<std::size_t>(each)] = i++;
        }
        return byCode;
    }();
    return places[static_cast<std::size_t>(kind)];
}

/// How many pawns, knights, bishops, rooks and queens White has, then Black; or the first side of a
/// table, then the second.
using PieceCounts = std::array<int, 2 * CountedKinds>;

/// The en-passant square of a position that has none.
inline constexpr int NoEnPassant = 127;

}  // namespace brivok
