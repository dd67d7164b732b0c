#include "colour_exchange.h"

#include <array>
#include <cassert>

namespace brivok::tables {
namespace {

/// Bit by row and row by bit.
void transpose(std::array<Bitboard, 64>& matrix) {
    Bitboard mask = 0x00000000FFFFFFFF;
    for (unsigned step = 32; step != 0; step >>= 1, mask ^= mask << step) {
        for (std::size_t row = 0; row < 64; row = (row + step + 1) & ~std::size_t{step}) {
            const Bitboard different = ((matrix[row] >> step) ^ matrix[row + step]) & mask;
            matrix[row] ^= different << step;
            matrix[row + step] ^= different;
        }
    }
}

}  // namespace

ColourExchange::ColourExchange(const Material& material, const Layout& itsLayout)
    : layout(itsLayout), menOfSide((material.count - 2) / 2) {
    assert(menOfSide == 1 || menOfSide == 2);
}

Layout::Reduction ColourExchange::of(unsigned pair) const {
    const auto [first, second] = layout.kingsOf(pair);
    return layout.reduce(second, first);
}

/// With a and b the squares of the one side's men, c and d those of the other's, and all images,
/// the exchanged position of a, b, c, d is c, d, a, b. So bits change places with the second of the
/// squares that number a row, within 64 rows at a time. With one man each, bits and rows do.
void ColourExchange::exchange(unsigned pair, const Bitboard* exchanged, Bitboard* block) const {
    const unsigned symmetry = of(pair).symmetry;
    const Layout::Image& image = layout.image(symmetry);
    const std::size_t outer = menOfSide == 1 ? 1 : 64;
    std::array<Bitboard, 64> matrix{};
    for (std::size_t c = 0; c < outer; ++c) {
        const Bitboard* const slab = exchanged + (outer == 1 ? 0 : std::size_t{image[c]} << 12);
        for (std::size_t a = 0; a < outer; ++a) {
            Bitboard any = 0;
            for (std::size_t d = 0; d < 64; ++d) {
                const std::size_t row = outer == 1 ? image[d] : image[d] * outer + image[a];
                matrix[d] = slab[row];
                any |= matrix[d];
            }
            if (any != 0) {
                for (Bitboard& set : matrix) set = Layout::origins(set, symmetry);
                transpose(matrix);
            }
            for (std::size_t b = 0; b < 64; ++b) block[(a * 64 + b) * outer + c] = matrix[b];
        }
    }
}

}  // namespace brivok::tables
