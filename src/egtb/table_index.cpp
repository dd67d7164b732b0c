#include "egtb/table_index.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <utility>

#include "egtb/index_plan.h"

namespace brivok {
namespace {

/// Index of a set of men among all sets of that size, from the numbers of the single men
/// (combinatorial number system).
template <class NumberOf>
std::uint64_t combination(const MenRun& run, SquareWord men, NumberOf numberOf) {
    std::uint64_t a = numberOf(squareIn(men, run.byte));
    if (run.count == 1) return a;
    std::uint64_t b = numberOf(squareIn(men, run.byte + 1U));
    if (a > b) std::swap(a, b);
    if (run.count == 2) return choose(b, 2) + a;
    std::uint64_t c = numberOf(squareIn(men, run.byte + 2U));
    if (b > c) std::swap(b, c);
    if (a > b) std::swap(a, b);
    return choose(c, 3) + choose(b, 2) + a;
}

/// NoIndex if the kings are too close or a man of the group gives check from close by.
std::uint64_t groupIndex(const GroupDigit& group, SquareWord men) {
    men = flipped(men, group.flip);
    const unsigned mover = squareIn(men, MoverKingByte);
    const unsigned other = squareIn(men, OtherKingByte);
    const int pair = group.pairs->number[mover][other];
    if (pair == KingPairs::Missing) return NoIndex;

    bool allowed = true;
    std::uint64_t digit = 0;
    for (std::size_t i = 0; i < group.runCount; ++i) {
        const MenRun& run = group.runs[i];
        const GroupSquares squares(run.type, mover, other);
        digit *= choose(squares.count(), run.count);
        digit += combination(run, men, [&](unsigned square) {
            allowed &= squares.allows(square);
            return squares.numberOf(square);
        });
    }
    return allowed ? group.start[pair] + digit : NoIndex;
}

std::uint64_t sectionIndex(const IndexSection& section, SquareWord men) {
    const std::uint64_t group = groupIndex(section.group, men);
    if (group == NoIndex) return NoIndex;
    std::uint64_t index = group * section.group.weight;
    for (std::size_t i = 0; i < section.digitCount; ++i) {
        const MenDigit& digit = section.digits[i];
        const SquareWord placed = men | digit.padding;
        index += digit.weight * combination(digit.run, men, [&](unsigned square) {
                     return square - digit.lowest - countBelow(placed, square);
                 });
    }
    return index;
}

/// Transforms the board so that the king of the side to move is where the king pairs expect it.
SquareWord normalized(const IndexPlan& plan, SquareWord men, unsigned rankFlip) {
    const unsigned king = squareIn(men, MoverKingByte);
    const unsigned fileFlip = (king & 4) != 0 ? FileFlip : 0;
    if (plan.hasPawns) return flipped(men, fileFlip ^ rankFlip);
    men = flipped(men, fileFlip ^ ((king & 32) != 0 ? RankFlip : 0U));
    // The lower pair of king squares has the mover's king below the diagonal, or on it with the
    // other king not above it.
    constexpr SquareWord Kings = 0xFFFF;
    const SquareWord mirrored = transposed(men);
    return (mirrored & Kings) < (men & Kings) ? mirrored : men;
}

bool pawnsOnTheirRanks(const IndexPlan& plan, SquareWord men) {
    constexpr SquareWord AtLeast8 = (128 - 8) * EveryByte;
    constexpr SquareWord AtLeast56 = (128 - 56) * EveryByte;
    const SquareWord highBits = plan.pawnBytes << 7;
    return ((men + AtLeast8) & ~(men + AtLeast56) & highBits) == highBits;
}

/// Swaps the man on `square` with the first of the run; false if no man of the run is there.
bool bringToFront(const MenRun& run, unsigned square, SquareWord& men) {
    const unsigned front = squareIn(men, run.byte);
    for (unsigned man = 0; man < run.count; ++man) {
        if (squareIn(men, run.byte + man) != square) continue;
        const SquareWord bothBytes = squareAtByte(1, run.byte) ^ squareAtByte(1, run.byte + man);
        men ^= bothBytes * (square ^ front);
        return true;
    }
    return false;
}

/// `men` is normalized and holds the en passant square.
std::uint64_t enPassantIndex(const IndexPlan& plan, SquareWord men) {
    const unsigned target = squareIn(men, EnPassantByte);
    const unsigned file = target & 7;
    const EnPassantSquares squares(plan, file);
    if (target != squares.target) return NoIndex;
    if (!bringToFront(plan.otherPawns, squares.taken, men)) return NoIndex;

    // If two pawns could capture, the one on the lower file counts.
    unsigned caseNumber = file;
    if (file > 0 && bringToFront(plan.moverPawns, squares.taken - 1, men)) {
        caseNumber = CasesTowardsA + file - 1;
    } else if (file == 7 || !bringToFront(plan.moverPawns, squares.taken + 1, men)) {
        return NoIndex;
    }
    men =
        (men & ~squareAtByte(0xFF, PawnOriginByte)) | squareAtByte(squares.origin, PawnOriginByte);
    const std::uint64_t rest = sectionIndex(plan.enPassant, men);
    if (rest == NoIndex) return NoIndex;
    return plan.plain.count + rest * EnPassantCases + caseNumber;
}

}  // namespace

std::uint64_t tableIndex(int id, unsigned side, const PieceList& first, const PieceList& second,
                         int ep, int invert) {
    const IndexPlan& plan = indexPlan(id, side);
    const PieceList& mover = side == 0 ? first : second;
    const PieceList& other = side == 0 ? second : first;
    SquareWord men =
        squareAtByte(other[KingSlot], OtherKingByte) | squareAtByte(mover[KingSlot], MoverKingByte);
    for (unsigned i = 0; i < plan.menCount; ++i) {
        const IndexPlan::Slot& man = plan.men[i];
        men |= squareAtByte((man.isMovers ? mover : other)[man.slot], FirstManByte + i);
    }
    assert((men & 0xC0 * EveryByte) == 0);
    const bool capture = plan.hasEnPassant && ep != NoEnPassant;
    if (capture) men |= squareAtByte(static_cast<unsigned>(ep), EnPassantByte);
    men = normalized(plan, men, plan.rankFlip ^ (invert != 0 ? RankFlip : 0));
    if (!pawnsOnTheirRanks(plan, men)) return NoIndex;
    return capture ? enPassantIndex(plan, men) : sectionIndex(plan.plain, men);
}

std::uint64_t tableIndexCount(int id, unsigned side) {
    const IndexPlan& plan = indexPlan(id, side);
    return plan.plain.count + plan.enPassant.count * EnPassantCases;
}

void prepareTableIndex() { static_cast<void>(indexPlan(0, 0)); }

}  // namespace brivok
