#include "layout.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "egtb/enumeration.h"

namespace brivok::tables {
namespace {

// Bits of a symmetry, in the order in which they are applied.
constexpr unsigned FlipFiles = 1;
constexpr unsigned FlipRanks = 2;
constexpr unsigned Transpose = 4;

/// File of the en passant square, and the side of the pawn.
constexpr unsigned CaptureCaseBits = 4;

bool onDiagonal(Square square) { return (square & 7) == square >> 3; }

}  // namespace

Layout::Layout(const Material& itsMaterial) : material(itsMaterial) {
    const bool pawns = material.hasPawns();
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
            for (std::size_t symmetry = pawns ? 2 : 8; symmetry-- > 0;) {
                const auto& image = symmetries[symmetry];
                const std::uint16_t pair = pairs.number[image[first]][image[second]];
                if (pair != KingPairs::Missing) {
                    reductions[first][second] = {pair, static_cast<std::uint8_t>(symmetry)};
                }
            }
        }
    }
    for (std::size_t man = 2; man < material.count; ++man) {
        hasLikeMen |= material.likeTheOneBefore(man);
        if (material.man[man] == Kind::Pawn) lastPawn[material.side[man]] = man;
    }
    plainBits = 6 * static_cast<unsigned>(material.count - 2);
    plainSize = total = std::uint64_t{pairs.count} << plainBits;
    if (material.hasEnPassant()) {
        epBits = plainBits - 12;
        total += std::uint64_t{pairs.count} << (CaptureCaseBits + epBits);
    }
}

Position Layout::position(std::uint64_t index, unsigned mover) const {
    if (index >= plainSize) return epPosition(index - plainSize, mover);
    Position position;
    position.mover = static_cast<std::uint8_t>(mover);
    const auto& pair = kings[index >> plainBits];
    position.squares[0] = pair[0];
    position.squares[1] = pair[1];
    unsigned shift = plainBits;
    for (std::size_t man = 2; man < material.count; ++man) {
        shift -= 6;
        position.squares[man] = static_cast<std::uint8_t>(index >> shift & 63);
    }
    return position;
}

std::uint64_t Layout::index(const Position& position) const {
    const auto [pair, symmetry] = reductions[position.squares[0]][position.squares[1]];
    assert(pair != KingPairs::Missing);
    const auto& image = symmetries[symmetry];
    Squares squares = position.squares;
    for (std::size_t man = 0; man < material.count; ++man) squares[man] = image[squares[man]];
    if (hasLikeMen) sortLikeMen(squares);
    if (position.ep != NoEnPassant) {
        return epIndex(pair, position.mover, squares, image[static_cast<std::size_t>(position.ep)]);
    }
    const std::uint64_t index = plainIndex(pair, squares);
    if (material.hasPawns() || !onDiagonal(squares[0]) || !onDiagonal(squares[1])) return index;
    for (std::size_t man = 2; man < material.count; ++man) {
        squares[man] = symmetries[Transpose][squares[man]];
    }
    sortLikeMen(squares);
    return std::min(index, plainIndex(pair, squares));
}

bool Layout::isItsOwnMirror(const Position& position) const {
    const Squares& squares = position.squares;
    if (material.hasPawns() || !onDiagonal(squares[0]) || !onDiagonal(squares[1])) return false;
    Squares mirror = squares;
    for (std::size_t man = 2; man < material.count; ++man) {
        mirror[man] = symmetries[Transpose][mirror[man]];
    }
    sortLikeMen(mirror);
    return std::equal(squares.begin(),
                      squares.begin() + static_cast<std::ptrdiff_t>(material.count),
                      mirror.begin());
}

void Layout::sortLikeMen(Squares& squares) const {
    for (std::size_t man = 3; man < material.count; ++man) {
        for (std::size_t i = man; i > 2 && material.likeTheOneBefore(i); --i) {
            if (squares[i - 1] > squares[i]) std::swap(squares[i - 1], squares[i]);
        }
    }
}

std::uint64_t Layout::plainIndex(unsigned pair, const Squares& squares) const {
    std::uint64_t index = pair;
    for (std::size_t man = 2; man < material.count; ++man) index = index << 6 | squares[man];
    return index;
}

// The two pawns of the capture are not numbered among the men. If two pawns could capture, the one
// towards the a-file is used.

std::uint64_t Layout::epIndex(unsigned pair, unsigned mover, const Squares& squares, int ep) const {
    const int taken = ep - pawnStep(mover);
    int taking = taken + 1;
    for (std::size_t man = 2; man < material.count; ++man) {
        if (material.man[man] == Kind::Pawn && material.side[man] == mover && (taken & 7) != 0 &&
            squares[man] == taken - 1) {
            taking = taken - 1;
        }
    }
    std::uint64_t index = pair << CaptureCaseBits | static_cast<unsigned>(ep & 7) << 1 |
                          static_cast<unsigned>(taking > taken);
    for (std::size_t man = 2; man < material.count; ++man) {
        if (squares[man] != taking && squares[man] != taken) index = index << 6 | squares[man];
    }
    return plainSize + index;
}

Position Layout::epPosition(std::uint64_t index, unsigned mover) const {
    Position position;
    position.mover = static_cast<std::uint8_t>(mover);
    const std::uint64_t captureCase = index >> epBits;
    const auto& pair = kings[captureCase >> CaptureCaseBits];
    position.squares[0] = pair[0];
    position.squares[1] = pair[1];
    position.ep = static_cast<int>(captureCase >> 1 & 7) + 8 * (pawnHome(mover ^ 1U) == 6 ? 5 : 2);
    const int taken = position.ep - pawnStep(mover);
    const int taking = (captureCase & 1) != 0 ? taken + 1 : taken - 1;
    unsigned shift = epBits;
    for (std::size_t man = 2; man < material.count; ++man) {
        if (man == lastPawn[mover]) {
            position.squares[man] = static_cast<std::uint8_t>(taking);
        } else if (man == lastPawn[mover ^ 1U]) {
            position.squares[man] = static_cast<std::uint8_t>(taken);
        } else {
            shift -= 6;
            position.squares[man] = static_cast<std::uint8_t>(index >> shift & 63);
        }
    }
    sortLikeMen(position.squares);
    return position;
}

}  // namespace brivok::tables
