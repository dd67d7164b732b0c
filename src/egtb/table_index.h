#pragma once

#include <cstddef>
#include <cstdint>

#include "egtb/piece_list.h"

/// @file
/// The order of positions in the files of the Nalimov tables. A position is first reduced by the
/// symmetries of the board. Then the kings are numbered together with the men of the side to move,
/// leaving out squares that would give check at once; the other men are numbered on the remaining
/// squares. Positions with an en passant capture follow all others.
namespace brivok {

/// Result of tableIndex() for a position without an entry.
inline constexpr std::uint64_t NoIndex = ~std::uint64_t{0};

/// The index of a position in the file of table `id` (1 to 440) for `side` to move: 0 is the first
/// side of the signature, 1 the second. `first` and `second` are the sides of the table; `invert`
/// is 1 if the first side is Black. `ep` is the en passant target square or NoEnPassant. NoIndex if
/// the position has no entry: a man on a square where it may not be, or an en passant square
/// without a pawn that could capture there. Not every illegal position is detected: with two men on
/// one square, or on the squares that a capture requires to be empty, the index is meaningless.
[[nodiscard]] std::uint64_t tableIndex(int id, unsigned side, const PieceList& first,
                                       const PieceList& second, int ep, int invert);

/// Number of indices, including the en passant section. A file may be shorter, since it ends with
/// its last legal position.
[[nodiscard]] std::uint64_t tableIndexCount(int id, unsigned side);

/// A position of a table, with the first side as White.
struct TablePosition {
    PieceList first{};
    PieceList second{};
    int ep = NoEnPassant;  ///< target square or NoEnPassant
};

/// The inverse of tableIndex() with `invert` 0, for `index` below tableIndexCount(). The position
/// may be illegal, with the side not to move in check. False if no position belongs to the index.
[[nodiscard]] bool tablePosition(int id, unsigned side, std::uint64_t index,
                                 TablePosition& position);

/// Largest single allocation of the numbering's tables.
inline constexpr std::size_t LargestIndexArrayBytes = 1807 * sizeof(std::uint32_t);

/// Builds the tables of the numbering, once; takes a few milliseconds. The other functions do so
/// too on first use, but that should not happen during a search.
void prepareTableIndex();

}  // namespace brivok
