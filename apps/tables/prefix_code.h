#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "bit_writer.h"

namespace brivok::tables {

/// Code lengths of the optimal prefix code for symbols with these counts, none longer than `limit`
/// (package-merge: Larmore and Hirschberg 1990). Symbols that never occur have length 0, a single
/// symbol has length 1. `limit` must suffice for all symbols that occur.
[[nodiscard]] std::vector<std::uint8_t> codeLengths(std::span<const std::uint64_t> counts,
                                                    unsigned limit);

/// The canonical code for given lengths: codes rise by length, then by symbol. A single symbol
/// takes no bits.
class PrefixCode {
public:
    PrefixCode() = default;
    explicit PrefixCode(std::vector<std::uint8_t> itsLengths);

    [[nodiscard]] const std::vector<std::uint8_t>& lengths() const { return itsLengths; }
    [[nodiscard]] bool has(std::size_t symbol) const { return itsLengths[symbol] != 0; }

    /// Bits of the symbol's code.
    [[nodiscard]] unsigned bits(std::size_t symbol) const { return lone ? 0 : itsLengths[symbol]; }

    void put(BitWriter& writer, std::size_t symbol) const {
        writer.put(codes[symbol], bits(symbol));
    }

private:
    std::vector<std::uint8_t> itsLengths;
    std::vector<std::uint32_t> codes;
    bool lone = false;
};

}  // namespace brivok::tables
