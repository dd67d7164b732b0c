#include "leaving_worths.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <vector>

#include "file_walk.h"
#include "parallel.h"

namespace brivok::tables {
namespace {

constexpr auto WorthOfByte = [] {
    std::array<Worth, 256> worths{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        worths[byte] = worthOfLeaving(outcomeOf(static_cast<std::uint8_t>(byte)));
    }
    return worths;
}();

/// By man, the place of its square in the number of a position, in bits.
using Places = std::array<unsigned, MaxMen>;

/// The places with like men exchanged, in all ways.
std::vector<Places> waysToNumber(const Material& material) {
    std::array<std::size_t, MaxMen> order{};
    for (std::size_t man = 0; man < material.count; ++man) order[man] = man;
    const auto exchangesLikeMen = [&] {
        for (std::size_t man = 2; man < material.count; ++man) {
            if (material.man[order[man]] != material.man[man]) return false;
            if (material.side[order[man]] != material.side[man]) return false;
        }
        return true;
    };
    std::vector<Places> ways;
    const auto end = order.begin() + static_cast<std::ptrdiff_t>(material.count);
    do {
        if (!exchangesLikeMen()) continue;
        Places& places = ways.emplace_back();
        for (std::size_t man = 2; man < material.count; ++man) {
            places[man] = 6 * static_cast<unsigned>(material.count - 1 - order[man]);
        }
    } while (std::next_permutation(order.begin() + 2, end));
    return ways;
}

}  // namespace

LeavingWorths::LeavingWorths(int id, const Material& material, const Layout& layout, unsigned mover,
                             std::span<const std::uint8_t> entries, unsigned threads)
    : blockSize(layout.rowsPerPair() << 6), worths(std::make_unique<Worth[]>(layout.size())) {
    const FileWalk walk(id, material, mover);
    const std::vector<Places> ways = waysToNumber(material);
    std::atomic<std::uint64_t> valuesPlaced = 0;
    inParallel(
        threads, walk.pairs(),
        [&](std::uint64_t begin, std::uint64_t end) {
            std::uint64_t values = 0;
            for (std::uint64_t pair = begin; pair < end; ++pair) {
                walk.visitPair(
                    static_cast<unsigned>(pair), [&](std::uint64_t index, const Squares& squares) {
                        if (index >= entries.size() || entries[index] == BrokenByte) return;
                        ++values;
                        const auto [to, symmetry] = layout.reduce(squares[0], squares[1]);
                        const Layout::Image& image = layout.image(symmetry);
                        Worth* const first = worths.get() + std::size_t{to} * blockSize;
                        for (const Places& places : ways) {
                            std::size_t number = 0;
                            for (std::size_t man = 2; man < material.count; ++man) {
                                number |= std::size_t{image[squares[man]]} << places[man];
                            }
                            first[number] = WorthOfByte[entries[index]];
                        }
                    });
            }
            valuesPlaced += values;
        },
        1);
    plainEntries = std::min<std::uint64_t>(walk.size(), entries.size());
    const auto plain = entries.first(plainEntries);
    strays = plainEntries -
             static_cast<std::uint64_t>(std::count(plain.begin(), plain.end(), BrokenByte)) -
             valuesPlaced;
}

}  // namespace brivok::tables
