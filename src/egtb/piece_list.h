#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace brivok {

/// The men of one side by squares of the table files, a1 = 0, b1 = 1 .. h8 = 63: three slots each
/// for pawns, knights, bishops, rooks and queens, then the king. Empty slots are never read; how
/// many are filled follows from the table's signature.
using PieceList = std::array<std::uint32_t, 16>;

inline constexpr std::size_t SlotsPerType = 3;  ///< of pawns, knights and so on
inline constexpr std::size_t KingSlot = 15;     ///< the last one

/// How many pawns, knights, bishops, rooks and queens White has, then Black.
using PieceCounts = std::array<int, 10>;

/// The en-passant square of a position that has none.
inline constexpr int NoEnPassant = 127;

}  // namespace brivok
