#include "table_costs.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

#include "egtb/enumeration.h"
#include "file_walk.h"
#include "material.h"
#include "passing.h"
#include "table_reader.h"
#include "table_store.h"

namespace brivok::tables {
namespace {

/// Bytes of the program itself, and of what is too small to be counted.
constexpr std::uint64_t Base = 16'000'000;

// Processor time, in nanoseconds: by position of the layout and side to move, and by entry.
constexpr double MakingPawnless = 22;
constexpr double MakingPawns = 28;
constexpr double MakingEnPassant = 40;
constexpr double Packing = 29;
constexpr double Checking = 0.7;
constexpr double Adopting = 3;  // the entries below included

/// Size of the packed files in percent of the plain ones, without and with pawns.
constexpr std::uint64_t PackedPawnless = 26;
constexpr std::uint64_t PackedPawns = 22;

/// The positions of a table in the generator's own numbering, for one side to move.
std::uint64_t layoutSize(const Material& material) {
    std::uint64_t size = material.hasPawns() ? kingPairs1806.count : kingPairs462.count;
    for (std::size_t man = 2; man < material.count; ++man) size *= 64;
    return size;
}

std::uint64_t plainBytes(int id) {
    std::uint64_t bytes = 0;
    for (unsigned side = 0; side < filesOf(id); ++side) bytes += bytesOf(id, side);
    return bytes;
}

/// Bytes of the distances of all positions: one for all that are equal by exchange of like men.
std::uint64_t distanceBytes(int id, const Material& material) {
    std::uint64_t positions = material.hasPawns() ? kingPairs1806.count : kingPairs462.count;
    for (std::size_t man = 2, like = 1; man < material.count; ++man) {
        like = man > 2 && material.likeTheOneBefore(man) ? like + 1 : 1;
        positions = positions * (65 - like) / like;
    }
    return filesOf(id) * positions * (isWide(id) ? 2 : 1);
}

/// Bytes of the files that hold the results of conversions.
std::uint64_t bytesBelow(const Material& material) {
    std::set<std::pair<int, unsigned>> files;
    for (const Conversion& conversion : conversionsOf(material)) {
        const EntryFinder finder(convert(material, conversion));
        if (finder.table() == 0) continue;
        const unsigned side = finder.sideOf(moverAfter(material, conversion));
        files.emplace(finder.table(), isSameForBoth(finder.table()) ? 0 : side);
    }
    std::uint64_t bytes = 0;
    for (const auto& [id, side] : files) bytes += descriptorOf(id).size[side];
    return bytes;
}

/// Bytes of the lists of positions with an en passant square.
std::uint64_t bytesOfPassings(int id, const Material& material) {
    if (!material.hasEnPassant()) return 0;
    std::uint64_t entries = 0;
    for (unsigned side = 0; side < filesOf(id); ++side) {
        entries += descriptorOf(id).size[side] - FileWalk(id, material, side).size();
    }
    // The lists number alike men in each order, and grow by doubling.
    constexpr std::uint64_t Reserve = 2;
    const bool alike =
        material.count == 5 && (material.likeTheOneBefore(3) || material.likeTheOneBefore(4));
    return entries * (alike ? 2 : 1) * Reserve * sizeof(Passing);
}

/// Without the distances.
std::uint64_t memoryToMake(int id, const Material& material) {
    const std::uint64_t positions = layoutSize(material);
    const std::uint64_t sides = filesOf(id);
    // The captures of each man are worth a byte for each row of 64. The sets take three bits for
    // each position; they are freed before the files are filled, a piece at a time.
    const std::uint64_t captures = (material.count - 2) * sides / 2 * (positions / 64);
    return Base + captures + bytesOfPassings(id, material) + bytesBelow(material) +
           sides * 3 * positions / 8 + sides * positions / 4096 * 32;
}

}  // namespace

TableCosts costsOf(int id) {
    const Material material = materialOf(descriptorOf(id).signature());
    const auto positions = static_cast<double>(filesOf(id) * layoutSize(material));
    const std::uint64_t plain = plainBytes(id);
    const double each = material.hasEnPassant() ? MakingEnPassant
                        : material.hasPawns()   ? MakingPawns
                                                : MakingPawnless;
    return {.seconds = positions * each / 1e9,
            .packSeconds = static_cast<double>(plain) * Packing / 1e9,
            .adoptSeconds = static_cast<double>(plain + bytesBelow(material)) * Adopting / 1e9,
            .checkSeconds = static_cast<double>(plain) * Checking / 1e9,
            .memory = memoryToMake(id, material) + distanceBytes(id, material),
            .plain = plain,
            .packed = plain * (material.hasPawns() ? PackedPawns : PackedPawnless) / 100};
}

TableCosts costsWithScratch(int id) {
    TableCosts costs = costsOf(id);
    costs.scratch = distanceBytes(id, materialOf(descriptorOf(id).signature()));
    costs.memory -= costs.scratch;
    return costs;
}

}  // namespace brivok::tables
