#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "egtb/datacomp_format.h"

/// The alphabet of DATACOMP: a symbol is a byte, or a match that repeats what stands one of 24
/// distances back. The distances are the file's; a match names its slot and the class of its
/// length, and extra bits after the symbol tell the length within the class.
namespace brivok::tables {

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;

inline constexpr std::size_t LiteralCount = datacomp::FirstMatch;
inline constexpr std::size_t SlotCount = datacomp::DistanceCount;
inline constexpr std::size_t ClassCount = datacomp::LengthCodes;
inline constexpr std::size_t SymbolCount = datacomp::SymbolCount;

/// Classes 0 .. 14 are the lengths 1 .. 15. Above, a class has twice the lengths of the one before.
inline constexpr unsigned ExactClasses = datacomp::PlainLengths;

[[nodiscard]] constexpr unsigned lengthClass(unsigned length) {
    assert(length != 0);
    if (length <= ExactClasses) return length - 1;
    return static_cast<unsigned>(std::bit_width(length - (ExactClasses - 1))) - 1 +
           (ExactClasses - 1);
}
[[nodiscard]] constexpr unsigned extraBits(unsigned itsClass) {
    return itsClass < ExactClasses ? 0 : itsClass - (ExactClasses - 1);
}
[[nodiscard]] constexpr unsigned shortestOf(unsigned itsClass) {
    if (itsClass < ExactClasses) return itsClass + 1;
    return (1U << extraBits(itsClass)) + (ExactClasses - 1);
}
[[nodiscard]] constexpr unsigned longestOf(unsigned itsClass) {
    return shortestOf(itsClass) + (1U << extraBits(itsClass)) - 1;
}

[[nodiscard]] constexpr std::size_t matchSymbol(std::size_t slot, unsigned itsClass) {
    return LiteralCount + slot * ClassCount + itsClass;
}

/// Blocks stand for themselves: a match neither reaches back before its block nor leaves it.
inline constexpr unsigned BlockLog = 13;
inline constexpr unsigned BlockSize = 1U << BlockLog;

/// Number of blocks of so many bytes; only the last may be shorter than BlockSize.
[[nodiscard]] constexpr std::uint64_t blocksIn(std::uint64_t bytes) {
    return (bytes + BlockSize - 1) / BlockSize;
}
[[nodiscard]] inline ByteSpan blockOf(ByteSpan blocks, std::size_t number) {
    const std::size_t start = number * BlockSize;
    return blocks.subspan(start, std::min<std::size_t>(BlockSize, blocks.size() - start));
}

/// Classes of the lengths that fit into a block.
inline constexpr unsigned UsedClasses = lengthClass(BlockSize - 1) + 1;

/// The distances of a file, 1 .. BlockSize - 1, ascending.
using Distances = std::array<std::uint16_t, SlotCount>;

using SymbolCounts = std::array<std::uint64_t, SymbolCount>;

}  // namespace brivok::tables
