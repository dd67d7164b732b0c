#include "prefix_code.h"

#include <algorithm>
#include <cassert>

namespace brivok::tables {

std::vector<std::uint8_t> codeLengths(std::span<const std::uint64_t> counts, unsigned limit) {
    std::vector<std::uint8_t> lengths(counts.size(), 0);
    std::vector<std::size_t> symbols;
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
        if (counts[symbol] != 0) symbols.push_back(symbol);
    }
    if (symbols.size() == 1) lengths[symbols[0]] = 1;
    if (symbols.size() <= 1) return lengths;
    assert(symbols.size() <= std::size_t{1} << limit);
    std::stable_sort(symbols.begin(), symbols.end(), [&](std::size_t left, std::size_t right) {
        return counts[left] < counts[right];
    });

    // A row holds the symbols, and the pairs of the row before, sorted by weight. Only the weights
    // and which items are symbols matter, because items are always taken from the cheap end.
    std::vector<std::vector<bool>> isSymbol(limit);
    std::vector<std::uint64_t> weights;
    for (unsigned row = 0; row < limit; ++row) {
        std::vector<std::uint64_t> merged;
        std::size_t next = 0;
        std::size_t pair = 0;
        while (next < symbols.size() || pair + 1 < weights.size()) {
            const bool noPair = pair + 1 >= weights.size();
            const std::uint64_t pairWeight = noPair ? 0 : weights[pair] + weights[pair + 1];
            const bool takeSymbol =
                noPair || (next < symbols.size() && counts[symbols[next]] <= pairWeight);
            merged.push_back(takeSymbol ? counts[symbols[next]] : pairWeight);
            isSymbol[row].push_back(takeSymbol);
            if (takeSymbol) {
                ++next;
            } else {
                pair += 2;
            }
        }
        weights = std::move(merged);
    }

    std::ptrdiff_t taken = 2 * static_cast<std::ptrdiff_t>(symbols.size()) - 2;
    for (unsigned row = limit; row-- > 0;) {
        const auto first = isSymbol[row].begin();
        const std::ptrdiff_t cheapest = std::count(first, first + taken, true);
        for (std::ptrdiff_t i = 0; i < cheapest; ++i) {
            ++lengths[symbols[static_cast<std::size_t>(i)]];
        }
        taken = 2 * (taken - cheapest);
    }
    return lengths;
}

PrefixCode::PrefixCode(std::vector<std::uint8_t> lengths)
    : itsLengths(std::move(lengths)), codes(itsLengths.size(), 0) {
    std::size_t used = 0;
    std::uint32_t code = 0;
    const unsigned longest = *std::max_element(itsLengths.begin(), itsLengths.end());
    for (unsigned length = 1; length <= longest; ++length, code <<= 1) {
        for (std::size_t symbol = 0; symbol < itsLengths.size(); ++symbol) {
            if (itsLengths[symbol] != length) continue;
            codes[symbol] = code++;
            ++used;
        }
    }
    lone = used == 1;
}

}  // namespace brivok::tables
