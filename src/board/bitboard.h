#pragma once

#include <bit>
#include <cassert>
#include <concepts>
#include <cstddef>
#include <cstdint>

#include "board/types.h"

namespace brivok {

/// A set of squares: bit n stands for square n.
using Bitboard = std::uint64_t;

/// A compile-time table of sets, indexed by square, file or row.
template <std::size_t N>
struct BitboardTable {
    Bitboard sets[N];
    /// The index is not checked.
    template <std::integral Index>
    [[nodiscard]] constexpr Bitboard operator[](Index index) const {
        return sets[index];
    }
};

namespace detail {
template <std::size_t N>
consteval BitboardTable<N> shifted(Bitboard first, unsigned step) {
    BitboardTable<N> table{};
    for (unsigned i = 0; i < N; ++i) table.sets[i] = first << (i * step);
    return table;
}
consteval BitboardTable<64> complements() {
    BitboardTable<64> table{};
    for (unsigned sq = 0; sq < 64; ++sq) table.sets[sq] = ~(Bitboard{1} << sq);
    return table;
}
}  // namespace detail

/// The set that holds one square.
inline constexpr BitboardTable<64> bit = detail::shifted<64>(1, 1);
inline constexpr BitboardTable<64> notBit = detail::complements();

/// All squares of a file; index 0 is the a-file.
inline constexpr BitboardTable<8> fileMask = detail::shifted<8>(0x0101010101010101, 1);
inline constexpr BitboardTable<8> rowMask = detail::shifted<8>(0xFF, 8);  ///< index 0 is rank 8

inline constexpr Bitboard FileA = 0x0101010101010101;
inline constexpr Bitboard FileH = 0x8080808080808080;

inline constexpr Bitboard lightSquares = 0xAA55AA55AA55AA55;
inline constexpr Bitboard darkSquares = 0x55AA55AA55AA55AA;  ///< a1 is dark

/// The lowest set bit. Undefined on an empty set.
[[nodiscard]] inline Square firstBit(Bitboard set) {
    assert(set != 0);
    return __builtin_ctzll(set);
}

/// The highest set bit. Undefined on an empty set.
[[nodiscard]] inline Square highestBit(Bitboard set) {
    assert(set != 0);
    return __builtin_clzll(set) ^ 63;
}

/// The highest set bit of squares 0 to 31 if there is one, else the highest of squares 32 to 63:
/// the scan runs from h5 back to a8, then from h1 back to a4. Swapping the halves makes it one
/// plain scan from the top; the square found is then 32 away. Undefined on an empty set.
[[nodiscard]] inline Square lastBit(Bitboard set) { return highestBit(std::rotl(set, 32)) ^ 32; }

/// The number of squares in each of the set's eight bytes, side by side (Knuth, The Art of Computer
/// Programming 4A, 7.1.3). Up to 31 results can be added up before a byte can overflow.
[[nodiscard]] inline Bitboard byteCounts(Bitboard set) {
    set -= set >> 1U & 0x5555555555555555;
    set = (set & 0x3333333333333333) + (set >> 2U & 0x3333333333333333);
    return (set + (set >> 4U)) & 0x0F0F0F0F0F0F0F0F;
}

/// The number of squares in the set. Without a POPCNT instruction a dozen simple ones do it, with
/// no branch to guess: the sizes of sets vary too much for a loop.
[[nodiscard]] inline int popCount(Bitboard set) {
#ifdef __POPCNT__
    return std::popcount(set);
#else
    return static_cast<int>(byteCounts(set) * 0x0101010101010101 >> 56U);
#endif
}

/// Removes one square from a non-empty set and returns it, in the side's scan order: firstBit() for
/// White, lastBit() for Black. This fixes the order of generated moves, and so every tie in the
/// search.
template <Side S>
[[nodiscard]] inline Square takeNext(Bitboard& set) {
    if constexpr (S == White) {
        const Square sq = firstBit(set);
        set &= set - 1;
        return sq;
    } else {
        const Square sq = lastBit(set);
        set &= notBit[sq];
        return sq;
    }
}

/// The neighbours, on their ranks, of the squares of a set.
[[nodiscard]] constexpr Bitboard besides(Bitboard set) {
    return (set & ~FileA) >> 1U | (set & ~FileH) << 1U;
}

/// Moves a set of pawns one step forward.
template <Side S>
[[nodiscard]] constexpr Bitboard pushed(Bitboard pawns) {
    return S == White ? pawns >> 8U : pawns << 8U;
}

/// Squares that pawns attack towards the a-file.
template <Side S>
[[nodiscard]] constexpr Bitboard attackedWest(Bitboard pawns) {
    return S == White ? (pawns & ~FileA) >> 9U : (pawns & ~FileA) << 7U;
}
/// Squares that pawns attack towards the h-file.
template <Side S>
[[nodiscard]] constexpr Bitboard attackedEast(Bitboard pawns) {
    return S == White ? (pawns & ~FileH) >> 7U : (pawns & ~FileH) << 9U;
}

/// All squares that pawns attack.
template <Side S>
[[nodiscard]] constexpr Bitboard pawnCover(Bitboard pawns) {
    return attackedWest<S>(pawns) | attackedEast<S>(pawns);
}

}  // namespace brivok
