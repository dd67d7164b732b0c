#include "worth_places.h"

#include <algorithm>
#include <bit>

namespace brivok::tables {

WorthPlaces::WorthPlaces(const Material& material, const Layout& layout)
    : men(material.count),
      lastIsLike(men > 3 && material.likeTheOneBefore(men - 1)),
      exchanges(exchangesOf(material)),
      sortedRow(layout.rowsPerPair()),
      start(layout.rowsPerPair(), NoStart) {
    const auto hasLikeOnOneSquare = [&](std::size_t position) {
        // The last man is at 0 here, and the squares of others count.
        for (std::size_t man = 3; man + 1 < men; ++man) {
            const unsigned shift = 6 * static_cast<unsigned>(men - 1 - man);
            if (material.likeTheOneBefore(man) &&
                (position >> shift & 63) == (position >> (shift + 6) & 63)) {
                return true;
            }
        }
        return false;
    };
    for (std::size_t row = 0; row < sortedRow.size(); ++row) {
        std::size_t least = row;
        for (const Exchange& exchange : exchanges) {
            if (exchange[men - 1] != men - 1) continue;
            least = std::min(least, exchanged(row << 6, exchange) >> 6);
        }
        sortedRow[row] = static_cast<std::uint32_t>(least);
        if (least != row || hasLikeOnOneSquare(row << 6)) continue;
        const Bitboard kept = keeps(row);
        start[row] = static_cast<std::int32_t>(count) - std::countr_zero(kept);
        count += static_cast<std::size_t>(std::popcount(kept));
    }
}

std::size_t WorthPlaces::ofUnsorted(std::size_t position) const {
    std::size_t least = position;
    for (const Exchange& exchange : exchanges) {
        least = std::min(least, exchanged(position, exchange));
    }
    return static_cast<std::size_t>(start[least >> 6] + static_cast<std::int32_t>(least & 63));
}

}  // namespace brivok::tables
