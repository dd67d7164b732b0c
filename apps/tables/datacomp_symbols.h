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

/// The alphabet of DATACOMP. A symbol is a byte, or a match that repeats bytes from one of 24
/// distances back. The distances belong to the file. A match names its slot and the class of its
/// length; extra bits after the symbol give the length within the class.
namespace brivok::tables {

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;

inline constexpr std::size_t LiteralCount = datacomp::FirstMatch;
inline constexpr std::size_t SlotCount = datacomp::DistanceCount;
inline constexpr std::size_t ClassCount = datacomp::LengthCodes;
inline constexpr std::size_t SymbolCount = datacomp::SymbolCount;

/// Classes 0 to 14 are the lengths 1 to 15. Each later class has twice as many lengths as the one
/// before.
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

/// Blocks are independent: a match stays within its block at both ends.
inline constexpr unsigned BlockLog = 13;
inline constexpr unsigned BlockSize = 1U << BlockLog;

/// Number of blocks for so many bytes; only the last may be shorter than BlockSize.
[[nodiscard]] constexpr std::uint64_t blocksIn(std::uint64_t bytes) {
    return (bytes + BlockSize - 1) / BlockSize;
}
[[nodiscard]] inline ByteSpan blockOf(ByteSpan blocks, std::size_t number) {
    const std::size_t start = number * BlockSize;
    return blocks.subspan(start, std::min<std::size_t>(BlockSize, blocks.size() - start));
}

/// Classes of the lengths that fit in a block.
inline constexpr unsigned UsedClasses = lengthClass(BlockSize - 1) + 1;

/// The distances of a file, 1 to BlockSize - 1, ascending.
using Distances = std::array<std::uint16_t, SlotCount>;

using SymbolCounts = std::array<std::uint64_t, SymbolCount>;

}  // namespace brivok::tables
