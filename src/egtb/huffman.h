#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "egtb/bit_reader.h"

namespace brivok {

inline constexpr int LongestCode = 31;  ///< bits of a code

/// Builds the table that decodes a canonical Huffman code (codes rise with their length, and within
/// a length with the symbol) from the lengths of the symbols' codes, 0 for a symbol without one.
/// False unless the lengths are at most LongestCode and make a complete code. Two special ones: all
/// lengths 0, and a single symbol of length 1; they decode to symbol 0 and to that symbol without
/// taking bits.
///
/// `table` has 2^`bits` entries for the next `bits` bits, then two for each symbol. An entry is
/// symbol * 32 + length. For a longer code it is minus the index of a pair, whose elements belong
/// to the values of the next bit: again such a link, or the plain symbol.
[[nodiscard]] bool BuildDecodeTable(std::span<const std::uint8_t> lengths, int bits,
                                    std::span<std::int16_t> table);

/// A code of up to `Symbols` symbols, decoded by a first level of `Bits` bits.
template <int Bits, int Symbols>
class HuffmanTable {
    static_assert(Symbols <= 1024, "an entry has 10 bits for the symbol");
    static_assert((1 << Bits) + 2 * Symbols <= 32767, "an entry holds a negative index");

public:
    /// See BuildDecodeTable(); after false the table may not be used.
    [[nodiscard]] bool build(std::span<const std::uint8_t, Symbols> lengths) {
        return BuildDecodeTable(lengths, Bits, entries);
    }

    /// Takes the next symbol from a reader that has LongestCode bits available.
    [[nodiscard]] int decode(BitReader& reader) const {
        int entry = entries[reader.peek(Bits)];
        if (entry >= 0) [[likely]] {
            reader.skip(entry & 31);
            return entry >> 5;
        }
        reader.skip(Bits);
        do {
            entry = entries[static_cast<std::size_t>(-entry) + reader.take(1)];
        } while (entry < 0);
        return entry;
    }

private:
    std::array<std::int16_t, (1 << Bits) + 2 * Symbols> entries{};
};

}  // namespace brivok
