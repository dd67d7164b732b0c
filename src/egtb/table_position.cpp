#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>

#include "egtb/index_plan.h"
#include "egtb/table_index.h"

namespace brivok {
namespace {

/// Numbers of the men of one run, lowest first (inverse of the combinatorial number system).
using Numbers = std::array<unsigned, 3>;

Numbers numbersOf(std::uint64_t combination, unsigned count) {
    Numbers numbers{};
    for (unsigned men = count; men > 1; --men) {
        unsigned highest = men - 1;
        while (choose(highest + 1, men) <= combination) ++highest;
        numbers[men - 1] = highest;
        combination -= choose(highest, men);
    }
    numbers[0] = static_cast<unsigned>(combination);
    return numbers;
}

/// A partly known position: squares by byte, and which squares are occupied.
class Placement {
public:
    [[nodiscard]] SquareWord squares() const { return men; }

    /// False if the square is occupied.
    [[nodiscard]] bool put(unsigned square, unsigned byte) {
        men |= squareAtByte(square, byte);
        const std::uint64_t bit = std::uint64_t{1} << square;
        const bool isFree = (taken & bit) == 0;
        taken |= bit;
        return isFree;
    }

private:
    SquareWord men = 0;
    std::uint64_t taken = 0;
};

bool placeGroup(const GroupDigit& group, std::uint64_t index, Placement& placement) {
    const std::uint32_t* const end = group.start + group.pairs->count + 1;
    const auto pair =
        static_cast<std::size_t>(std::upper_bound(group.start, end, index) - group.start - 1);
    std::uint64_t digit = index - group.start[pair];
    const auto [mover, other] = group.pairs->kings[pair];
    bool distinct = placement.put(mover ^ group.flip, MoverKingByte) &&
                    placement.put(other ^ group.flip, OtherKingByte);
    for (std::size_t i = group.runCount; i-- > 0;) {
        const MenRun& run = group.runs[i];
        const GroupSquares squares(run.type, mover, other);
        const std::uint64_t radix = choose(squares.count(), run.count);
        const Numbers numbers = numbersOf(digit % radix, run.count);
        digit /= radix;
        for (unsigned man = 0; man < run.count; ++man) {
            const unsigned square = squares.squareOf(numbers[man]) ^ group.flip;
            distinct &= placement.put(square, run.byte + man);
        }
    }
    return distinct;
}

bool placeRun(const MenDigit& digit, std::uint64_t index, Placement& placement) {
    const SquareWord placed = placement.squares() | digit.padding;
    const Numbers numbers = numbersOf(index / digit.weight % digit.radix, digit.run.count);
    for (unsigned man = 0; man < digit.run.count; ++man) {
        // Men placed on lower squares shift this one up.
        const unsigned onEmptyBoard = numbers[man] + digit.lowest;
        unsigned square = onEmptyBoard;
        while (square != onEmptyBoard + countBelow(placed, square + 1)) {
            square = onEmptyBoard + countBelow(placed, square + 1);
        }
        if (!placement.put(square, digit.run.byte + man)) return false;
    }
    return true;
}

bool placeSection(const IndexSection& section, std::uint64_t index, Placement& placement) {
    if (!placeGroup(section.group, index / section.group.weight, placement)) return false;
    for (std::size_t i = 0; i < section.digitCount; ++i) {
        if (!placeRun(section.digits[i], index, placement)) return false;
    }
    return true;
}

/// Places the two pawns of the capture and reserves the squares that must stay empty.
bool placeCapture(const IndexPlan& plan, unsigned caseNumber, Placement& placement) {
    const bool towardsA = caseNumber < CasesTowardsA;
    const EnPassantSquares squares(plan, towardsA ? caseNumber : caseNumber - CasesTowardsA + 1);
    return placement.put(towardsA ? squares.taken + 1 : squares.taken - 1, plan.moverPawns.byte) &&
           placement.put(squares.taken, plan.otherPawns.byte) &&
           placement.put(squares.target, EnPassantByte) &&
           placement.put(squares.origin, PawnOriginByte);
}

bool placeMen(const IndexPlan& plan, std::uint64_t index, Placement& placement) {
    if (index < plan.plain.count) return placeSection(plan.plain, index, placement);
    index -= plan.plain.count;
    return placeCapture(plan, static_cast<unsigned>(index % EnPassantCases), placement) &&
           placeSection(plan.enPassant, index / EnPassantCases, placement);
}

}  // namespace

bool tablePosition(int id, unsigned side, std::uint64_t index, TablePosition& position) {
    const IndexPlan& plan = indexPlan(id, side);
    assert(index < tableIndexCount(id, side));
    Placement placement;
    if (!placeMen(plan, index, placement)) return false;

    const SquareWord men = flipped(placement.squares(), plan.rankFlip);
    PieceList& mover = side == 0 ? position.first : position.second;
    PieceList& other = side == 0 ? position.second : position.first;
    mover[KingSlot] = squareIn(men, MoverKingByte);
    other[KingSlot] = squareIn(men, OtherKingByte);
    for (unsigned i = 0; i < plan.menCount; ++i) {
        const auto [isMovers, slot] = plan.men[i];
        (isMovers ? mover : other)[slot] = squareIn(men, FirstManByte + i);
    }
    position.ep = NoEnPassant;
    if (index < plan.plain.count) return true;
    position.ep = static_cast<int>(squareIn(men, EnPassantByte));
    // If two pawns could capture, only one of them yields the index.
    return tableIndex(id, side, position.first, position.second, position.ep, 0) == index;
}

}  // namespace brivok
