#include "egtb/huffman.h"

#include <algorithm>
#include <cassert>

namespace brivok {

namespace {

using LengthCounts = std::array<unsigned, LongestCode + 1>;

/// Kraft's equality: the codes exactly fill the code space.
[[nodiscard]] bool isComplete(const LengthCounts& counts) {
    unsigned sum = 0;
    for (unsigned length = LongestCode; length > 0; --length) {
        sum += counts[length];
        if (sum % 2 != 0) return false;
        sum /= 2;
    }
    return sum == 1;
}

}  // namespace

bool BuildDecodeTable(std::span<const std::uint8_t> lengths, unsigned bits,
                      std::span<std::uint16_t> table) {
    const std::size_t firstLevel = std::size_t{1} << bits;
    assert(table.size() >= firstLevel + 2 * lengths.size());
    std::fill(table.begin(), table.end(), std::uint16_t{0});

    LengthCounts counts{};
    for (const std::uint8_t length : lengths) {
        if (length > LongestCode) return false;
        ++counts[length];
    }
    const std::size_t coded = lengths.size() - counts[0];
    if (coded == 0) return true;
    if (coded == 1) {
        const auto symbol =
            std::find_if(lengths.begin(), lengths.end(), [](auto length) { return length != 0; });
        if (*symbol != 1) return false;
        const auto entry = static_cast<std::uint16_t>((symbol - lengths.begin()) * 32);
        std::fill_n(table.begin(), firstLevel, entry);
        return true;
    }
    if (!isComplete(counts)) return false;

    // A complete code has one inner node fewer than symbols, so the pairs fit in the table.
    std::size_t nextPair = firstLevel;
    std::uint32_t code = 0;
    for (unsigned length = 1; length <= LongestCode; ++length, code <<= 1U) {
        if (counts[length] == 0) continue;
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            if (lengths[symbol] != length) continue;
            if (length <= bits) {
                const unsigned spare = bits - length;
                std::fill_n(table.begin() + (std::ptrdiff_t{code} << spare), 1U << spare,
                            static_cast<std::uint16_t>(symbol * 32 + length));
            } else {
                std::size_t node = code >> (length - bits);
                for (unsigned bit = length - bits; bit-- > 0;) {
                    if (table[node] < CodeLink) {
                        table[node] = static_cast<std::uint16_t>(CodeLink + nextPair);
                        nextPair += 2;
                    }
                    node = table[node] - CodeLink + ((code >> bit) & 1U);
                }
                table[node] = static_cast<std::uint16_t>(symbol);
            }
            ++code;
        }
    }
    return true;
}

}  // namespace brivok
