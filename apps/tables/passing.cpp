#include "passing.h"

#include "geometry.h"
#include "moves.h"

namespace brivok::tables {
namespace {

/// Whether the pawn may have come from its home rank, past a pawn of the mover.
bool mayHavePassed(const Material& material, const Squares& squares, std::size_t pawn,
                   Bitboard occupied) {
    const unsigned side = material.side[pawn];
    const Square here = squares[pawn];
    const int step = pawnStep(side);
    return isDoubleStep(side, here) &&
           (occupied & (bit[here - step] | bit[here - 2 * step])) == 0 &&
           epSquareBehind(material, squares, pawn) != NoEnPassant;
}

}  // namespace

void appendPassings(const Row& row, unsigned mover, const ConversionWorths& conversions,
                    std::vector<Passing>& passings) {
    const Material& material = row.material;
    const std::size_t last = material.count - 1;
    const unsigned other = mover ^ 1U;
    for (std::size_t pawn = 2; pawn < material.count; ++pawn) {
        if (material.man[pawn] != Kind::Pawn || material.side[pawn] != other) continue;
        if (pawn != last && !isDoubleStep(other, row.squares[pawn])) continue;
        std::size_t back = 16;  // two ranks, in the numbers of positions
        for (std::size_t man = pawn; man < last; ++man) back <<= 6;
        Squares squares = row.squares;
        for (Bitboard rest = row.legal(mover); rest != 0;) {
            squares[last] = static_cast<std::uint8_t>(takeNext<White>(rest));
            const Bitboard occupied = row.occupied | bit[squares[last]];
            if (!mayHavePassed(material, squares, pawn, occupied)) continue;
            const std::size_t plain = row.number << 6 | squares[last];
            const std::size_t origin = other == 0 ? plain - back : plain + back;
            passings.push_back({.plain = static_cast<std::uint32_t>(plain),
                                .origin = static_cast<std::uint32_t>(origin),
                                .capture = conversions.enPassant(squares, pawn)});
        }
    }
}

}  // namespace brivok::tables
