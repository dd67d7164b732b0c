#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "board/bitboard.h"
#include "board/types.h"

/// Rows of 64 bytes, one for each square of the board from a1 to h8, and operations on whole rows.
namespace brivok::tables {

struct alignas(64) RowBytes {
    std::array<std::uint8_t, 64> at{};
};

/// A row as eight words, one for each rank.
using RankWords = std::array<std::uint64_t, 8>;

[[nodiscard]] inline RankWords ranksOf(const std::uint8_t* row) {
    RankWords ranks;
    std::memcpy(ranks.data(), row, sizeof ranks);
    return ranks;
}

/// The greater of two bytes. Unlike std::max it lets compilers work on many at once.
[[nodiscard]] constexpr std::uint8_t greater(std::uint8_t a, std::uint8_t b) {
    return a > b ? a : b;
}

/// Raises each byte to that of the other row.
inline void raise(RowBytes& row, const std::uint8_t* other) {
    RowBytes result;
    for (std::size_t i = 0; i < 64; ++i) result.at[i] = greater(row.at[i], other[i]);
    row = result;
}
inline void raise(RowBytes& row, const RowBytes& other) { raise(row, other.at.data()); }

/// Clears the bytes that are 0 in the mask, whose others are 255.
inline void keep(RowBytes& row, const RowBytes& mask) {
    for (std::size_t i = 0; i < 64; ++i) row.at[i] &= mask.at[i];
}

/// 255 on the squares of the set, 0 elsewhere.
[[nodiscard]] inline RowBytes maskOf(Bitboard set) {
    static constexpr auto Masks = [] {
        std::array<std::array<std::uint8_t, 8>, 256> masks{};
        for (std::size_t byte = 0; byte < 256; ++byte) {
            for (std::size_t i = 0; i < 8; ++i) masks[byte][i] = (byte >> i & 1) != 0 ? 255 : 0;
        }
        return masks;
    }();
    RowBytes mask;
    for (std::size_t rank = 0; rank < 8; ++rank) {
        std::memcpy(&mask.at[8 * rank], &Masks[set >> (8 * rank) & 0xFF], 8);
    }
    return mask;
}

/// The mask of all squares but one, by that square.
inline constexpr std::array<RowBytes, 64> AllBut = [] {
    std::array<RowBytes, 64> masks{};
    for (std::size_t square = 0; square < 64; ++square) {
        masks[square].at.fill(255);
        masks[square].at[square] = 0;
    }
    return masks;
}();

/// Each square gets the byte of its image under a symmetry of the Layout.
[[nodiscard]] RowBytes permuted(const std::uint8_t* row, unsigned symmetry);

/// Raises the byte of each square to the greatest byte on the squares that a man there can move to
/// without a capture. Pawns make single steps. On occupied squares the bytes of `row` must be 0.
void raiseByMovesWithin(RowBytes& best, const std::uint8_t* row, Kind man, unsigned side,
                        Bitboard occupied);

}  // namespace brivok::tables
