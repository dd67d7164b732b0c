#include "retrograde.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "moves.h"
#include "parallel.h"

namespace brivok::tables {
namespace {

/// More moves than three men and a king can have.
constexpr std::uint8_t Unlosable = 255;

/// Of a move in a mirror-symmetric position and the move's reflection, one counts as the first.
bool isFirstOfMirrors(Square from, Square to) {
    return from * 64 + to <= mirrored(from) * 64 + mirrored(to);
}

std::atomic_ref<std::uint8_t> shared(std::vector<std::uint8_t>& bytes, std::uint64_t index) {
    return std::atomic_ref<std::uint8_t>(bytes[index]);
}

}  // namespace

Retrograde::Retrograde(const Material& itsMaterial, const ConversionReader& itsConversions,
                       unsigned itsThreads)
    : material(itsMaterial),
      conversions(itsConversions),
      threads(itsThreads),
      layout(itsMaterial),
      hasEnPassant(itsMaterial.hasEnPassant()) {
    for (unsigned side = 0; side < 2; ++side) {
        outcomes[side].resize(layout.size());
        movesLeft[side].resize(layout.size());
    }
}

void Retrograde::solve(const Progress& progress) {
    const unsigned furthestConversion = examineAll();
    for (unsigned distance = 0; distance < LongestWin; ++distance) {
        std::uint64_t found = 0;
        for (unsigned side = 0; side < 2; ++side) found += winBefore(side, distance);
        for (unsigned side = 0; side < 2; ++side) found += loseBefore(side, distance + 1);
        progress(distance, found);
        if (found == 0 && distance >= furthestConversion) break;
    }
    settle();
}

/// Returns the longest distance of a provisional value.
unsigned Retrograde::examineAll() {
    std::atomic<unsigned> furthest = 0;
    for (unsigned side = 0; side < 2; ++side) {
        inParallel(threads, layout.size(), [&](std::uint64_t begin, std::uint64_t end) {
            unsigned longest = 0;
            for (std::uint64_t index = begin; index < end; ++index) {
                const Position position = layout.position(index, side);
                const bool counts = isLegal(material, position) && layout.index(position) == index;
                const Outcome outcome =
                    counts ? examine(position, movesLeft[side][index]) : NoValue;
                outcomes[side][index] = outcome;
                if (counts) longest = std::max(longest, movesToMate(outcome));
            }
            unsigned known = furthest;
            while (known < longest && !furthest.compare_exchange_weak(known, longest)) {
            }
        });
    }
    return furthest;
}

Outcome Retrograde::examine(const Position& position, std::uint8_t& left) const {
    const LegalMoves moves(material, position);
    BestReply best;
    moves.forEachConversion([&](const Squares& squares, const Conversion& conversion) {
        best.add(conversions.outcome(squares, position.mover ^ 1U, conversion));
    });
    int count = 0;
    const bool ownMirror = layout.isItsOwnMirror(position);
    for (std::size_t man = 0; man < material.count; ++man) {
        Bitboard quiet = moves.quiet(man);
        if (!ownMirror) {
            count += popCount(quiet);
            continue;
        }
        while (quiet != 0) {
            count += isFirstOfMirrors(position.squares[man], takeNext<White>(quiet)) ? 1 : 0;
        }
    }
    left = best.holds() ? Unlosable : static_cast<std::uint8_t>(count);
    if (count != 0 || best.holds() || best.loses()) return best.outcome();
    if (moves.inCheck()) return lossIn(0);
    left = Unlosable;
    return Draw;
}

/// Marks all predecessors of losses of `mover` in `distance` as wins in one more. Returns the
/// number of such losses.
std::uint64_t Retrograde::winBefore(unsigned mover, unsigned distance) {
    Bytes& targets = outcomes[mover ^ 1U];
    const Outcome win = winIn(distance + 1);
    return forEachWith(lossIn(distance), mover, [&](std::uint64_t index) {
        if (movesLeft[mover][index] != 0) return false;
        forEachPredecessor(layout.position(index, mover), [&](std::uint64_t before) {
            const auto target = shared(targets, before);
            const Outcome known = target.load(std::memory_order_relaxed);
            if (known == NoValue || (isWin(known) && known <= win)) return;
            target.store(win, std::memory_order_relaxed);
        });
        return true;
    });
}

/// Takes one move away from all predecessors of wins of `mover` in `distance`. Returns the number
/// of such wins.
std::uint64_t Retrograde::loseBefore(unsigned mover, unsigned distance) {
    Bytes& targets = outcomes[mover ^ 1U];
    Bytes& left = movesLeft[mover ^ 1U];
    const Outcome loss = lossIn(distance);
    return forEachWith(winIn(distance), mover, [&](std::uint64_t index) {
        forEachPredecessor(layout.position(index, mover), [&](std::uint64_t before) {
            const auto target = shared(targets, before);
            const Outcome known = target.load(std::memory_order_relaxed);
            if (known == NoValue || isWin(known)) return;
            const auto count = shared(left, before);
            if (count.load(std::memory_order_relaxed) == Unlosable) return;
            if (count.fetch_sub(1, std::memory_order_relaxed) != 1) return;
            // A conversion may hold out longer; the position is then lost at that later distance.
            if (!isLoss(known) || known < loss) target.store(loss, std::memory_order_relaxed);
        });
        return true;
    });
}

/// Provisional losses with moves left are draws.
void Retrograde::settle() {
    for (unsigned side = 0; side < 2; ++side) {
        inParallel(threads, layout.size(), [&](std::uint64_t begin, std::uint64_t end) {
            for (std::uint64_t index = begin; index < end; ++index) {
                if (isLoss(outcomes[side][index]) && movesLeft[side][index] != 0) {
                    outcomes[side][index] = Draw;
                }
            }
        });
        movesLeft[side] = Bytes();
    }
}

/// Calls visit(index), which returns whether to count it, for all positions with an outcome.
/// visit() may only change entries of the other side to move.
template <typename Visit>
std::uint64_t Retrograde::forEachWith(Outcome outcome, unsigned mover, Visit visit) {
    std::atomic<std::uint64_t> found = 0;
    const Bytes& bytes = outcomes[mover];
    inParallel(threads, layout.size(), [&](std::uint64_t begin, std::uint64_t end) {
        std::uint64_t count = 0;
        const std::uint8_t* const last = bytes.data() + end;
        const std::uint8_t* next = bytes.data() + begin;
        while ((next = static_cast<const std::uint8_t*>(std::memchr(
                    next, outcome, static_cast<std::size_t>(last - next)))) != nullptr) {
            count += visit(static_cast<std::uint64_t>(next - bytes.data())) ? 1 : 0;
            if (++next == last) break;
        }
        found += count;
    });
    return found;
}

/// Calls visit(index) for the positions before a move that neither captures nor promotes, including
/// illegal ones.
template <typename Visit>
void Retrograde::forEachPredecessor(const Position& position, Visit visit) const {
    const unsigned mover = position.mover ^ 1U;
    const Bitboard occupied = occupiedBy(material, position.squares);
    const bool ownMirror = layout.isItsOwnMirror(position);
    Position before;
    before.squares = position.squares;
    before.mover = static_cast<std::uint8_t>(mover);
    for (std::size_t man = 0; man < material.count; ++man) {
        if (material.side[man] != mover) continue;
        const std::uint8_t here = position.squares[man];
        Bitboard origins = retractions(material, position, man, occupied);
        while (origins != 0) {
            const Square origin = takeNext<White>(origins);
            if (ownMirror && !isFirstOfMirrors(here, origin)) continue;
            before.squares[man] = static_cast<std::uint8_t>(origin);
            visit(layout.index(before));
            if (hasEnPassant) forEachEpVariant(before, visit);
        }
        before.squares[man] = here;
    }
}

/// Calls visit(index) for the position with each en passant square that it can have.
template <typename Visit>
void Retrograde::forEachEpVariant(const Position& position, Visit visit) const {
    const unsigned other = position.mover ^ 1U;
    const int step = pawnStep(other);
    const Bitboard occupied = occupiedBy(material, position.squares);
    for (std::size_t man = 2; man < material.count; ++man) {
        if (material.man[man] != Kind::Pawn || material.side[man] != other) continue;
        const Square square = position.squares[man];
        if (!isDoubleStep(other, square)) continue;
        if ((occupied & (bit[square - step] | bit[square - 2 * step])) != 0) continue;
        Position variant = position;
        variant.ep = epSquareBehind(material, position.squares, man);
        if (variant.ep != NoEnPassant) visit(layout.index(variant));
    }
}

}  // namespace brivok::tables
