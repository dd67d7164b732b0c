#include "egtb/huffman.h"

#include <algorithm>
#include <cassert>

namespace brivok {

namespace {

using LengthCounts = std::array<unsigned, LongestCode + 1>;

/// Kraft's equality: the codes exactly fill the code space.
[[nodiscard]] bool isComplete(const LengthCounts& counts) {
    unsigned sum = 0;
    for (int length = LongestCode; length > 0; --length) {
        sum += counts[static_cast<std::size_t>(length)];
        if (sum % 2 != 0) return false;
        sum /= 2;
    }
    return sum == 1;
}

}  // namespace

bool BuildDecodeTable(std::span<const std::uint8_t> lengths, int bits,
                      std::span<std::int16_t> table) {
    const std::size_t firstLevel = std::size_t{1} << bits;
    assert(table.size() >= firstLevel + 2 * lengths.size());
    std::fill(table.begin(), table.end(), std::int16_t{0});

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
        const auto entry = static_cast<std::int16_t>((symbol - lengths.begin()) * 32);
        std::fill_n(table.begin(), firstLevel, entry);
        return true;
    }
    if (!isComplete(counts)) return false;

    // A complete code has one inner node fewer than symbols, so the pairs fit in the table.
    std::size_t nextPair = firstLevel;
    std::uint32_t code = 0;
    for (int length = 1; length <= LongestCode; ++length, code <<= 1U) {
        if (counts[static_cast<std::size_t>(length)] == 0) continue;
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            if (lengths[symbol] != length) continue;
            if (length <= bits) {
                const int spare = bits - length;
                std::fill_n(table.begin() + (std::ptrdiff_t{code} << spare), 1 << spare,
                            static_cast<std::int16_t>(symbol * 32 + static_cast<unsigned>(length)));
            } else {
                std::size_t node = code >> (length - bits);
                for (int bit = length - bits - 1; bit >= 0; --bit) {
                    if (table[node] >= 0) {
                        table[node] = static_cast<std::int16_t>(-static_cast<int>(nextPair));
                        nextPair += 2;
                    }
                    node = static_cast<std::size_t>(-table[node]) + ((code >> bit) & 1U);
                }
                table[node] = static_cast<std::int16_t>(symbol);
            }
            ++code;
        }
    }
    return true;
}

}  // namespace brivok
