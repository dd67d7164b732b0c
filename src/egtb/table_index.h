#pragma once

#include <cstddef>
#include <cstdint>

#include "egtb/piece_list.h"

/// @file
/// The order of the positions in the files of the Nalimov tables. A position is reduced by the
/// symmetries of the board; then the kings and the men of the side to move are numbered together,
/// leaving out squares from which they would give check at once, and the other men on the squares
/// left. Positions with an en-passant capture follow behind all others.
namespace brivok {

/// What tableIndex() returns for a position without an entry.
inline constexpr std::uint64_t NoIndex = ~std::uint64_t{0};

/// The place of a position in the file of table `id` (1 .. 440) for `side` to move: 0 for the
/// first side of the signature, 1 for the second. `first` and `second` are that table's sides;
/// `invert` is 1 when the first side is Black. `ep` is the en-passant target square or
/// NoEnPassant. NoIndex when the position has no entry: a man that may not stand where it stands,
/// or an en-passant square without a pawn that could take there. Not every illegal position is
/// found out: of men on one square, or on the squares that a capture needs empty, the index means
/// nothing.
[[nodiscard]] std::uint64_t tableIndex(int id, int side, const PieceList& first,
                                       const PieceList& second, int ep, int invert);

/// The number of indices that the numbering gives, en-passant section included. A file can be
/// shorter, since it ends with its last legal position.
[[nodiscard]] std::uint64_t tableIndexCount(int id, int side);

/// A position of a table, its first side White.
struct TablePosition {
    PieceList first{};     ///< men of the first side of the signature
    PieceList second{};    ///< men of the second
    int ep = NoEnPassant;  ///< en-passant target square or NoEnPassant
};

/// The reverse of tableIndex() with `invert` 0, for `index` below tableIndexCount(). The position
/// may be an illegal one, with the side not to move in check; false when no placement of the men
/// belongs to the index.
[[nodiscard]] bool tablePosition(int id, int side, std::uint64_t index, TablePosition& position);

/// The largest piece of memory that the tables of the numbering take.
inline constexpr std::size_t LargestIndexArrayBytes = 1807 * sizeof(std::uint32_t);

/// Makes the tables of the numbering, a few milliseconds' work, once. The first call of any of the
/// others does it too, but a search should not have to.
void prepareTableIndex();

}  // namespace brivok
