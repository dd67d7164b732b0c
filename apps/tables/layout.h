#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "board/bitboard.h"
#include "material.h"

namespace brivok::tables {

/// A numbering of the positions of a table, designed for work on whole rows of them. The highest
/// digit is the pair of kings up to symmetry, then follow the squares of the other men. The 64
/// positions that differ in the square of the last man are a row, which fits a bitboard; the rows
/// of a pair are a block. Both sides to move share the numbering.
///
/// Nothing else is reduced. Positions that are equal by exchange of like men, or by reflection with
/// both kings on the a1-h8 diagonal, have a number each, and equal values.
class Layout {
public:
    using Image = std::array<std::uint8_t, 64>;  ///< by square

    /// Bits of a symmetry, in the order in which they are applied.
    static constexpr unsigned FlipFiles = 1;
    static constexpr unsigned FlipRanks = 2;
    static constexpr unsigned Transpose = 4;

    struct Reduction {
        std::uint16_t pair = 0;     ///< KingPairs::Missing if the kings are adjacent
        std::uint8_t symmetry = 0;  ///< brings the kings there; 0 leaves all as it is
    };

    /// For this many men, kings included. With `pawns` the board has only the symmetry of its two
    /// wings, otherwise all eight.
    Layout(std::size_t itsMen, bool pawns);

    [[nodiscard]] unsigned pairs() const { return static_cast<unsigned>(kings.size()); }
    [[nodiscard]] std::size_t rowsPerPair() const { return std::size_t{1} << rowBits; }
    [[nodiscard]] std::uint64_t rows() const { return std::uint64_t{pairs()} << rowBits; }
    [[nodiscard]] std::uint64_t size() const { return std::uint64_t{pairs()} << menBits; }

    [[nodiscard]] Reduction reduce(Square first, Square second) const {
        return reductions[static_cast<std::size_t>(first)][static_cast<std::size_t>(second)];
    }
    /// The squares of a pair's kings.
    [[nodiscard]] const std::array<std::uint8_t, 2>& kingsOf(unsigned pair) const {
        return kings[pair];
    }
    [[nodiscard]] const Image& image(std::size_t symmetry) const { return symmetries[symmetry]; }

    /// The squares whose images are in the set.
    [[nodiscard]] static Bitboard origins(Bitboard set, unsigned symmetry);

    /// Whether a reflection in the diagonal maps the block of the pair onto itself.
    [[nodiscard]] bool isMirrored(unsigned pair) const;

    /// The number of a position. The kings must not be adjacent.
    [[nodiscard]] std::uint64_t index(const Squares& squares) const;

    /// The pair of kings of a number, and the place in its block.
    [[nodiscard]] unsigned pairOf(std::uint64_t index) const {
        return static_cast<unsigned>(index >> menBits);
    }
    [[nodiscard]] std::size_t placeInBlock(std::uint64_t index) const {
        return index & ((std::uint64_t{1} << menBits) - 1);
    }

    /// The inverse: a position with this number. It may be illegal.
    [[nodiscard]] Squares squares(std::uint64_t index) const;

private:
    std::size_t men;
    std::size_t count;     ///< of symmetries
    unsigned menBits = 0;  ///< of the men except the kings
    unsigned rowBits = 0;  ///< of the men except the kings and the last
    std::array<Image, 8> symmetries{};
    std::array<std::array<Reduction, 64>, 64> reductions{};
    std::vector<std::array<std::uint8_t, 2>> kings;  ///< by pair
};

}  // namespace brivok::tables
