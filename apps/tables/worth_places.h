#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "board/bitboard.h"
#include "layout.h"
#include "material.h"

namespace brivok::tables {

/// Where a value of each position of a block is kept, one for all positions that are equal by
/// exchange of like men. With two like men on each side that is a quarter of the positions.
///
/// Only rows whose like men stand in ascending order have places. If the last man has men like it,
/// so do only the squares behind theirs: those that keeps() contains. The places of a row are next
/// to each other, and the rows follow in order.
class WorthPlaces {
public:
    WorthPlaces(const Material& material, const Layout& layout);

    [[nodiscard]] std::size_t perPair() const { return count; }

    /// Whether like men other than the last stand on different squares in ascending order.
    [[nodiscard]] bool isSorted(std::size_t row) const { return start[row] != NoStart; }

    /// The row with the same men in order: a lower number, or the row itself.
    [[nodiscard]] std::size_t sorted(std::size_t row) const { return sortedRow[row]; }

    /// The squares of the last man that have places in a sorted row.
    [[nodiscard]] Bitboard keeps(std::size_t row) const {
        return firstKept(row) == 64 ? 0 : ~Bitboard{0} << firstKept(row);
    }

    /// The first of them, 0 to 64.
    [[nodiscard]] unsigned firstKept(std::size_t row) const {
        return lastIsLike ? static_cast<unsigned>(row & 63) + 1 : 0;
    }

    /// The place of square 0 of a sorted row. Squares that the row does not keep have places of
    /// other rows there.
    [[nodiscard]] std::int32_t startOf(std::size_t row) const { return start[row]; }

    /// The place after those of a sorted row.
    [[nodiscard]] std::int32_t endOf(std::size_t row) const { return start[row] + 64; }

    /// The place of a position of a block. Its like men must stand on different squares.
    [[nodiscard]] std::size_t of(std::size_t position) const {
        const std::size_t row = sortedRow[position >> 6];
        const std::size_t square = position & 63;
        if (lastIsLike && square < (row & 63)) return ofUnsorted(row << 6 | square);
        return static_cast<std::size_t>(start[row] + static_cast<std::int32_t>(square));
    }

    /// Calls visit(position) for all positions of the block that equal one.
    template <typename Visit>
    void forEachTwin(std::size_t position, Visit visit) const {
        for (const Exchange& exchange : exchanges) visit(exchanged(position, exchange));
    }

private:
    static constexpr std::int32_t NoStart = -1000;

    [[nodiscard]] std::size_t exchanged(std::size_t position, const Exchange& exchange) const {
        std::size_t result = 0;
        for (std::size_t man = 2; man < men; ++man) {
            result = result << 6 | (position >> 6 * (men - 1 - exchange[man]) & 63);
        }
        return result;
    }
    [[nodiscard]] std::size_t ofUnsorted(std::size_t position) const;

    std::size_t men;
    bool lastIsLike;
    std::vector<Exchange> exchanges;
    std::size_t count = 0;
    std::vector<std::uint32_t> sortedRow;  ///< by row
    std::vector<std::int32_t> start;       ///< by row; NoStart for those that are not sorted
};

}  // namespace brivok::tables
