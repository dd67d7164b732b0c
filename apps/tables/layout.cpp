#include "layout.h"

#include <cassert>

#include "egtb/enumeration.h"
#include "geometry.h"

namespace brivok::tables {
namespace {

bool onDiagonal(Square square) { return mirrored(square) == square; }

/// Exchanges the bits of `mask` with those `shift` places higher.
Bitboard exchange(Bitboard set, Bitboard mask, int shift) {
    const Bitboard different = (set ^ (set >> shift)) & mask;
    return set ^ different ^ (different << shift);
}

Bitboard reflectedInDiagonal(Bitboard set) {
    set = exchange(set, 0x00AA00AA00AA00AA, 7);
    set = exchange(set, 0x0000CCCC0000CCCC, 14);
    return exchange(set, 0x00000000F0F0F0F0, 28);
}

Bitboard withFilesFlipped(Bitboard set) {
    set = exchange(set, 0x5555555555555555, 1);
    set = exchange(set, 0x3333333333333333, 2);
    return exchange(set, 0x0F0F0F0F0F0F0F0F, 4);
}

Bitboard withRanksFlipped(Bitboard set) {
    set = exchange(set, 0x00FF00FF00FF00FF, 8);
    set = exchange(set, 0x0000FFFF0000FFFF, 16);
    return exchange(set, 0x00000000FFFFFFFF, 32);
}

}  // namespace

Layout::Layout(std::size_t itsMen, bool pawns)
    : men(itsMen),
      count(pawns ? 2 : 8),
      menBits(6 * static_cast<unsigned>(itsMen - 2)),
      rowBits(menBits == 0 ? 0 : menBits - 6) {
    const KingPairs& pairs = pawns ? kingPairs1806 : kingPairs462;
    kings.assign(pairs.kings.begin(), pairs.kings.begin() + pairs.count);
    for (unsigned symmetry = 0; symmetry < symmetries.size(); ++symmetry) {
        for (Square square = 0; square < 64; ++square) {
            Square image = square;
            if ((symmetry & FlipFiles) != 0) image ^= 7;
            if ((symmetry & FlipRanks) != 0) image ^= 56;
            if ((symmetry & Transpose) != 0) image = mirrored(image);
            symmetries[symmetry][static_cast<std::size_t>(square)] =
                static_cast<std::uint8_t>(image);
        }
    }
    for (std::size_t first = 0; first < 64; ++first) {
        for (std::size_t second = 0; second < 64; ++second) {
            reductions[first][second] = {KingPairs::Missing, 0};
            for (std::size_t symmetry = count; symmetry-- > 0;) {
                const Image& image = symmetries[symmetry];
                const std::uint16_t pair = pairs.number[image[first]][image[second]];
                if (pair != KingPairs::Missing) {
                    reductions[first][second] = {pair, static_cast<std::uint8_t>(symmetry)};
                }
            }
        }
    }
}

Bitboard Layout::origins(Bitboard set, unsigned symmetry) {
    if ((symmetry & Transpose) != 0) set = reflectedInDiagonal(set);
    if ((symmetry & FlipRanks) != 0) set = withRanksFlipped(set);
    return (symmetry & FlipFiles) != 0 ? withFilesFlipped(set) : set;
}

bool Layout::isMirrored(unsigned pair) const {
    return count == 8 && onDiagonal(kings[pair][0]) && onDiagonal(kings[pair][1]);
}

std::uint64_t Layout::index(const Squares& squares) const {
    const auto [pair, symmetry] = reduce(squares[0], squares[1]);
    assert(pair < pairs());
    const Image& image = symmetries[symmetry];
    std::uint64_t index = pair;
    for (std::size_t man = 2; man < men; ++man) index = index << 6 | image[squares[man]];
    return index;
}

Squares Layout::squares(std::uint64_t index) const {
    Squares squares{};
    const auto& pair = kings[index >> menBits];
    squares[0] = pair[0];
    squares[1] = pair[1];
    unsigned shift = menBits;
    for (std::size_t man = 2; man < men; ++man) {
        shift -= 6;
        squares[man] = static_cast<std::uint8_t>(index >> shift & 63);
    }
    return squares;
}

}  // namespace brivok::tables
