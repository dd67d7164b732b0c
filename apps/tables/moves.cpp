#include "moves.h"

#include <cassert>
#include <cstdlib>

#include "board/static_tables.h"

namespace brivok::tables {
namespace {

Bitboard occupiedBy(const Material& material, const Squares& squares) {
    Bitboard occupied = 0;
    for (std::size_t i = 0; i < material.count; ++i) occupied |= bit[squares[i]];
    return occupied;
}

/// Whether a man of the side, other than `gone`, attacks the square.
bool attacksSquare(const Material& material, const Squares& squares, unsigned side, Square square,
                   Bitboard occupied, std::size_t gone) {
    for (std::size_t i = 0; i < material.count; ++i) {
        if (material.side[i] != side || i == gone) continue;
        const Kind man = material.man[i];
        const Square from = squares[i];
        const Bitboard reach =
            man == Kind::Pawn ? pawnTargets(side, from) : onEmptyBoard(man, from);
        if ((reach & bit[square]) == 0) continue;
        if (!isSlider(man) || (between[from][square] & occupied) == 0) return true;
    }
    return false;
}

Bitboard pawnsOf(const Material& material, const Squares& squares, unsigned side) {
    Bitboard pawns = 0;
    for (std::size_t i = 2; i < material.count; ++i) {
        if (material.man[i] == Kind::Pawn && material.side[i] == side) pawns |= bit[squares[i]];
    }
    return pawns;
}

bool epSquareFits(const Material& material, const Position& position, Bitboard occupied) {
    const unsigned other = position.mover ^ 1U;
    const int step = pawnStep(other);
    const Square origin = position.ep - step;
    const Square pawn = position.ep + step;
    return origin >> 3 == pawnHome(other) && (occupied & (bit[position.ep] | bit[origin])) == 0 &&
           (pawnsOf(material, position.squares, other) & bit[pawn]) != 0 &&
           (pawnsOf(material, position.squares, position.mover) & besides(bit[pawn])) != 0;
}

}  // namespace

bool isLegal(const Material& material, const Position& position) {
    const Squares& squares = position.squares;
    Bitboard occupied = 0;
    for (std::size_t i = 0; i < material.count; ++i) {
        const Bitboard here = bit[squares[i]];
        if ((occupied & here) != 0) return false;
        if (material.man[i] == Kind::Pawn && (here & OuterRanks) != 0) return false;
        occupied |= here;
    }
    if (attacksSquare(material, squares, position.mover, squares[position.mover ^ 1U], occupied,
                      MaxMen)) {
        return false;
    }
    return position.ep == NoEnPassant || epSquareFits(material, position, occupied);
}

int epSquareBehind(const Material& material, const Squares& squares, std::size_t pawn) {
    const unsigned side = material.side[pawn];
    const Square square = squares[pawn];
    const Bitboard enemies = pawnsOf(material, squares, side ^ 1U);
    return (besides(bit[square]) & enemies) != 0 ? square - pawnStep(side) : NoEnPassant;
}

Position positionAfter(const Material& material, const Position& position, std::size_t man,
                       Square to) {
    Position after;
    after.squares = position.squares;
    after.squares[man] = static_cast<std::uint8_t>(to);
    after.mover = position.mover ^ 1U;
    if (material.man[man] == Kind::Pawn &&
        position.squares[man] + 2 * pawnStep(position.mover) == to) {
        after.ep = epSquareBehind(material, after.squares, man);
    }
    return after;
}

LegalMoves::LegalMoves(const Material& itsMaterial, const Position& itsPosition)
    : material(itsMaterial),
      position(itsPosition),
      occupied(occupiedBy(itsMaterial, itsPosition.squares)) {
    const Squares& squares = position.squares;
    const unsigned other = position.mover ^ 1U;
    const Square king = squares[position.mover];
    pinLine.fill(~Bitboard{0});
    for (std::size_t i = 0; i < material.count; ++i) {
        if (material.side[i] != other) continue;
        const Kind man = material.man[i];
        const Square from = squares[i];
        theirs |= bit[from];
        attacked |= attacksOf(man, other, from, occupied & ~bit[king]);
        if (!isSlider(man)) {
            if ((attacksOf(man, other, from, 0) & bit[king]) == 0) continue;
            ++checkers;
            checkBlocks = bit[from];
        } else if ((onEmptyBoard(man, from) & bit[king]) != 0) {
            const Bitboard path = between[from][king];
            const Bitboard inBetween = path & occupied;
            if (inBetween == 0) {
                ++checkers;
                checkBlocks = path | bit[from];
            } else if ((inBetween & (inBetween - 1)) == 0) {
                // This matters only if the man is the mover's; the entries of other men are never
                // read.
                pinLine[manOn(firstBit(inBetween))] = path | bit[from];
            }
        }
    }
}

Bitboard LegalMoves::targets(std::size_t man) const {
    const Square from = position.squares[man];
    if (material.side[man] != position.mover) return 0;
    const Bitboard ours = occupied & ~theirs;
    if (material.man[man] == Kind::King) return kingAttacks[from] & ~ours & ~attacked;
    if (checkers > 1) return 0;
    Bitboard squares = 0;
    if (material.man[man] == Kind::Pawn) {
        const int step = pawnStep(position.mover);
        squares = bit[from + step] & ~occupied;
        if (squares != 0 && from >> 3 == pawnHome(position.mover)) {
            squares |= bit[from + 2 * step] & ~occupied;
        }
        squares |= pawnTargets(position.mover, from) & theirs;
    } else {
        squares = attacksOf(material.man[man], position.mover, from, occupied) & ~ours;
    }
    return squares & pinLine[man] & checkBlocks;
}

bool LegalMoves::takesInPassing(std::size_t man) const {
    if (position.ep == NoEnPassant || material.man[man] != Kind::Pawn) return false;
    const Square from = position.squares[man];
    if ((pawnTargets(position.mover, from) & bit[position.ep]) == 0) return false;
    // Two men leave the rank at once, so the pins of single men are not enough.
    const Bitboard after = (occupied & ~bit[from] & ~bit[passedPawn()]) | bit[position.ep];
    return !attacksSquare(material, position.squares, position.mover ^ 1U,
                          position.squares[position.mover], after, manOn(passedPawn()));
}

std::size_t LegalMoves::manOn(Square square) const {
    std::size_t man = 0;
    while (position.squares[man] != square) {
        ++man;
        assert(man < material.count);
    }
    return man;
}

}  // namespace brivok::tables
