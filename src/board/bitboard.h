#pragma once

#include <array>
#include <bit>
#include <cassert>
#include <cstdint>

#include "board/types.h"

namespace brivok {

/// A set of squares: bit n stands for square n.
using Bitboard = std::uint64_t;

namespace detail {
consteval std::array<Bitboard, 64> singleBits() {
    std::array<Bitboard, 64> masks{};
    for (unsigned sq = 0; sq < 64; ++sq) masks[sq] = Bitboard{1} << sq;
    return masks;
}
consteval std::array<Bitboard, 64> clearedBits() {
    std::array<Bitboard, 64> masks{};
    for (unsigned sq = 0; sq < 64; ++sq) masks[sq] = ~(Bitboard{1} << sq);
    return masks;
}
consteval std::array<Bitboard, 8> fileMasks() {
    std::array<Bitboard, 8> masks{};
    for (unsigned file = 0; file < 8; ++file) masks[file] = Bitboard{0x0101010101010101} << file;
    return masks;
}
consteval std::array<Bitboard, 8> rowMasks() {
    std::array<Bitboard, 8> masks{};
    for (unsigned row = 0; row < 8; ++row) masks[row] = Bitboard{0xFF} << (8 * row);
    return masks;
}
}  // namespace detail

/// The set of one square, and its complement.
inline constexpr std::array<Bitboard, 64> bit = detail::singleBits();
inline constexpr std::array<Bitboard, 64> notBit = detail::clearedBits();

/// All squares of a file (index 0 is the a-file) and of a row (index 0 is rank 8).
inline constexpr std::array<Bitboard, 8> fileMask = detail::fileMasks();
inline constexpr std::array<Bitboard, 8> rowMask = detail::rowMasks();

inline constexpr Bitboard FileA = 0x0101010101010101;
inline constexpr Bitboard FileH = 0x8080808080808080;

/// Squares by colour; h1 is light.
inline constexpr Bitboard lightSquares = 0xAA55AA55AA55AA55;
inline constexpr Bitboard darkSquares = 0x55AA55AA55AA55AA;

/// The lowest set bit. Undefined on an empty set.
[[nodiscard]] inline Square firstBit(Bitboard set) {
    assert(set != 0);
    return __builtin_ctzll(set);
}

/// The reverse scan, on two halves: the highest set bit of squares 0 to 31 if there is one, else
/// the highest of squares 32 to 63. It walks h5 back to a8 and then h1 back to a4. Undefined on an
/// empty set. With the halves swapped it is one plain scan.
[[nodiscard]] inline Square lastBit(Bitboard set) {
    assert(set != 0);
    return (63 - __builtin_clzll(std::rotl(set, 32))) ^ 32;
}

/// The number of squares in the set. Sets are small, so without the processor's own instruction a
/// loop that clears the lowest bit beats a table.
[[nodiscard]] inline int popCount(Bitboard set) {
#ifdef __POPCNT__
    return std::popcount(set);
#else
    int count = 0;
    for (; set != 0; set &= set - 1) ++count;
    return count;
#endif
}

/// Removes one square from a non-empty set and returns it, in the walking order of a side: White
/// by firstBit(), Black by lastBit(). The order of generated moves, and with it every tie in the
/// search, rests on it.
template <Side S>
[[nodiscard]] inline Square takeNext(Bitboard& set) {
    if constexpr (S == White) {
        const Square sq = firstBit(set);
        set &= set - 1;
        return sq;
    } else {
        const Square sq = lastBit(set);
        set ^= bit[static_cast<unsigned>(sq)];
        return sq;
    }
}

}  // namespace brivok
