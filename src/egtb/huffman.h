#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "egtb/bit_reader.h"

namespace brivok {

inline constexpr int LongestCode = 31;  ///< bits

/// Set in an entry of a decoding table that leads to further bits.
inline constexpr std::uint16_t CodeLink = 0x8000;

/// Builds the decoding table of a canonical Huffman code (codes rise with their length, and within
/// a length with the symbol) from the code lengths of the symbols, 0 for unused ones. False unless
/// the lengths are at most LongestCode and form a complete code. Two special codes are allowed: all
/// lengths 0, and a single symbol of length 1. They decode to symbol 0 and to that symbol, without
/// consuming bits.
///
/// `table` has 2^`bits` entries, indexed by the next `bits` bits, followed by two per symbol. An
/// entry is symbol * 32 + length. For a longer code it is CodeLink plus the index of a pair, whose
/// two elements belong to the values of the next bit: either another such link or the plain symbol.
[[nodiscard]] bool BuildDecodeTable(std::span<const std::uint8_t> lengths, unsigned bits,
                                    std::span<std::uint16_t> table);

/// A code of up to `Symbols` symbols, decoded with a first level of `Bits` bits.
template <int Bits, int Symbols>
class HuffmanTable {
    static_assert(Symbols <= 1024, "an entry has 10 bits for the symbol");
    static_assert((1 << Bits) + 2 * Symbols <= 32767, "a link holds an index");

public:
    /// See BuildDecodeTable(). If it returns false, the table is unusable.
    [[nodiscard]] bool build(std::span<const std::uint8_t, Symbols> lengths) {
        return BuildDecodeTable(lengths, Bits, entries);
    }

    /// Takes the next symbol from a reader with LongestCode bits available.
    [[nodiscard]] unsigned decode(BitReader& reader) const {
        unsigned entry = entries[reader.peek(Bits)];
        if (entry < CodeLink) [[likely]] {
            reader.skip(entry & 31);
            return entry >> 5;
        }
        reader.skip(Bits);
        do {
            entry = entries[entry - CodeLink + reader.take(1)];
        } while (entry >= CodeLink);
        return entry;
    }

private:
    std::array<std::uint16_t, (1 << Bits) + 2 * Symbols> entries{};
};

}  // namespace brivok
