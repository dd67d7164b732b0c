#include "egtb/material_lookup.h"

#include <cstdint>
#include <utility>

#include "egtb/descriptors.h"
#include "egtb/signature.h"

namespace brivok {

namespace {

constexpr std::size_t Levels = std::tuple_size_v<PieceCounts>;  // one per kind of man
constexpr std::size_t MostMen = 4;                              // without kings

/// Number of ways to distribute up to `men` men over `levels` counts.
constexpr std::size_t waysToShare(std::size_t levels, std::size_t men) {
    std::size_t ways = 1;
    for (std::size_t i = 1; i <= men; ++i) ways = ways * (levels + i) / i;
    return ways;
}

/// The counts are numbered level by level; each man counted leaves fewer for the levels after it.
/// Entry [level][left][count] is the number of cases before `count` when `left` men remain to be
/// placed.
constexpr auto Skipped = [] {
    std::array<std::array<std::array<std::uint16_t, MostMen + 1>, MostMen + 1>, Levels> skipped{};
    for (std::size_t level = 0; level < Levels; ++level) {
        for (std::size_t left = 0; left <= MostMen; ++left) {
            std::size_t before = 0;
            for (std::size_t count = 0; count <= left; ++count) {
                skipped[level][left][count] = static_cast<std::uint16_t>(before);
                before += waysToShare(Levels - 1 - level, left - count);
            }
        }
    }
    return skipped;
}();

constexpr std::size_t Places = waysToShare(Levels, MostMen);
std::array<int, Places> tableIds{};

/// The index of these counts; `Places` if there are too many men.
std::size_t placeOf(const PieceCounts& counts) {
    std::size_t place = 0;
    std::size_t left = MostMen;
    for (std::size_t level = 0; level < Levels; ++level) {
        const std::size_t count = counts[level];
        if (count > left) return Places;
        place += Skipped[level][left][count];
        left -= count;
    }
    return place;
}

}  // namespace

int TableIdFromCounts(const PieceCounts& counts) {
    const std::size_t place = placeOf(counts);
    return place < Places ? tableIds[place] : 0;
}

void addToMaterialLookup(int id) {
    const TablebaseDescriptor& table = descriptorOf(id);
    const PieceCounts counts = countsOf(table.signature());
    tableIds[placeOf(counts)] = id;
    if ((table.flags & SameForBoth) != 0) return;
    tableIds[placeOf(withSidesSwapped(counts))] = -id;
}

}  // namespace brivok
