#include "retrograde.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>

#include "parallel.h"

namespace brivok::tables {
namespace {

/// Rows in a group, if a block has as many.
constexpr std::size_t RowsInGroup = 64;

bool contains(const Bitboard* block, std::uint32_t position) {
    return (block[position >> 6] >> (position & 63) & 1) != 0;
}

void insert(Bitboard* block, std::size_t position) { block[position >> 6] |= bit[position & 63]; }

/// Calls visit(position in the block) for each of a row's.
template <typename Visit>
void forEachIn(std::size_t row, Bitboard set, Visit visit) {
    while (set != 0) visit(row << 6 | static_cast<unsigned>(takeNext<White>(set)));
}

/// The squares with like men in order.
Squares sorted(const Material& material, Squares squares) {
    for (std::size_t man = 3; man < material.count; ++man) {
        for (std::size_t i = man; i > 2 && material.likeTheOneBefore(i); --i) {
            if (squares[i - 1] > squares[i]) std::swap(squares[i - 1], squares[i]);
        }
    }
    return squares;
}

bool isItsOwnMirror(const Material& material, const Squares& squares) {
    Squares mirror{};
    for (std::size_t man = 0; man < material.count; ++man) {
        mirror[man] = static_cast<std::uint8_t>(mirrored(squares[man]));
    }
    return sorted(material, squares) == sorted(material, mirror);
}

}  // namespace

Retrograde::Side::Side(const Layout& layout)
    : notWon(layout),
      open(layout),
      newLost(layout),
      hasNewWins(layout.pairs()),
      expected(layout.pairs() * std::max<std::size_t>(1, layout.rowsPerPair() / RowsInGroup)),
      expectedPassing(layout.pairs()),
      passings(layout.pairs()) {
    std::fill(notWon.isUsed.begin(), notWon.isUsed.end(), std::uint8_t{1});
}

Retrograde::Retrograde(const Material& itsMaterial, TableStore& store, unsigned itsThreads)
    : material(itsMaterial),
      threads(itsThreads),
      layout(itsMaterial.count, itsMaterial.hasPawns()),
      predecessors(material, layout),
      conversions(material, layout, store, threads),
      rowsPerPair(layout.rowsPerPair()),
      groupsPerPair(std::max<std::size_t>(1, rowsPerPair / RowsInGroup)),
      sides{Side(layout), Side(layout)} {
    for (std::size_t man = 3, like = 1; man < material.count; ++man) {
        like = material.likeTheOneBefore(man) ? like + 1 : 1;
        twins *= like;
    }
    // Left unset: the threads that examine the blocks are the first to touch these pages.
    for (auto& bytes : worths) {
        bytes = std::make_unique_for_overwrite<std::uint8_t[]>(layout.size());
    }
}

void Retrograde::solve(const Progress& progress) {
    inBlocks([this](unsigned pair, Block&) {
        examine(pair);
        return 0;
    });
    const unsigned furthest = furthestConversion();
    std::uint64_t losses = forBothSides([this](unsigned pair, unsigned mover, Block& from) {
        return findMates(pair, mover, from);
    });
    for (unsigned distance = 0; distance < LongestWin; ++distance) {
        const std::uint64_t wins = forBothSides([&](unsigned pair, unsigned mover, Block& from) {
            return findWins(pair, mover, distance + 1, from);
        });
        const std::uint64_t found = (losses + wins) / (2 * twins);
        progress(distance, found);
        if (found == 0 && distance >= furthest) break;
        losses = forBothSides([&](unsigned pair, unsigned mover, Block& from) {
            return findLosses(pair, mover, distance + 1, from);
        });
    }
    forBothSides([this](unsigned pair, unsigned mover, Block&) {
        settle(pair, mover);
        return 0;
    });
    for (Side& side : sides) {
        for (PositionSet* const set : {&side.notWon, &side.open, &side.newLost}) {
            set->rows = std::vector<Bitboard>();
        }
    }
}

/// Calls work(pair, mover, space for a block), which changes only what is known of that block with
/// that side to move, for all pairs with one side, then with the other. Returns the sum of the
/// results.
template <typename Work>
std::uint64_t Retrograde::forBothSides(Work work) {
    std::uint64_t sum = 0;
    for (unsigned mover = 0; mover < 2; ++mover) {
        sum += inBlocks([&](unsigned pair, Block& space) { return work(pair, mover, space); });
    }
    return sum;
}

/// Calls work(pair, space for a block) for all pairs, and returns the sum of the results.
template <typename Work>
std::uint64_t Retrograde::inBlocks(Work work) {
    std::atomic<std::uint64_t> sum = 0;
    constexpr std::uint64_t RowsInPiece = 1024;
    inParallel(
        threads, layout.pairs(),
        [&](std::uint64_t begin, std::uint64_t end) {
            Block space(rowsPerPair);
            for (std::uint64_t pair = begin; pair < end; ++pair) {
                sum += static_cast<std::uint64_t>(work(static_cast<unsigned>(pair), space));
            }
        },
        std::max<std::uint64_t>(1, RowsInPiece / rowsPerPair));
    return sum;
}

/// Finds the legal positions of a block, and what their conversions are worth.
void Retrograde::examine(unsigned pair) {
    for (std::size_t number = 0; number < rowsPerPair; ++number) {
        const Row row(material, layout, pair, number);
        for (unsigned mover = 0; mover < 2; ++mover) examineRow(row, mover);
    }
}

void Retrograde::examineRow(const Row& row, unsigned mover) {
    Side& side = sides[mover];
    const Bitboard legal = row.legal(mover);
    side.notWon.block(row.pair)[row.number] = legal;
    Worth* const found = worthsOf(row.pair, mover) + (row.number << 6);
    std::fill_n(found, 64, NoWorth);
    if (legal == 0) return;
    conversions.rate(row.squares, mover, legal, found);
    WorthSet& expected = side.expected[row.pair * groupsPerPair + row.number / RowsInGroup];
    Bitboard open = legal;
    for (Square square = 0; square < 64; ++square) {
        if (found[square] == NoWorth) continue;
        expected[found[square]] = true;
        if (found[square] >= DrawnWorth) open &= ~bit[square];
    }
    side.open.block(row.pair)[row.number] = open;
    if (!material.hasEnPassant()) return;
    std::vector<Passing>& passings = side.passings[row.pair];
    const std::size_t listed = passings.size();
    appendPassings(row, mover, conversions, passings);
    for (std::size_t i = listed; i < passings.size(); ++i) {
        side.expectedPassing[row.pair][passings[i].capture] = true;
    }
}

/// The longest distance of a conversion.
unsigned Retrograde::furthestConversion() const {
    WorthSet all;
    for (const Side& side : sides) {
        for (const WorthSet& set : side.expected) all |= set;
        for (const WorthSet& set : side.expectedPassing) all |= set;
    }
    all[DrawnWorth] = false;
    unsigned furthest = 0;
    for (unsigned worth = 0; worth < all.size(); ++worth) {
        if (all[worth]) furthest = std::max(furthest, movesIn(static_cast<Worth>(worth)));
    }
    return furthest;
}

/// Finds the positions without moves: mates are losses, the others draws.
std::uint64_t Retrograde::findMates(unsigned pair, unsigned mover, Block& from) {
    Side& side = sides[mover];
    findPredecessors(
        pair, mover, sides[mover ^ 1U].notWon, [](const Passing&) { return true; }, from);
    Bitboard* const open = side.open.block(pair);
    Bitboard* const lost = side.newLost.block(pair);
    Worth* const worth = worthsOf(pair, mover);
    for (Passing& passing : side.passings[pair]) {
        passing.captureIsOnlyMove = passing.capture != NoWorth && contains(open, passing.plain) &&
                                    worth[passing.plain] == NoWorth &&
                                    !contains(from.data(), passing.plain);
    }
    std::uint64_t count = 0;
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        lost[row] = 0;
        Bitboard stuck = open[row] & ~from[row];
        forEachIn(row, stuck, [&](std::size_t position) {
            if (worth[position] != NoWorth) stuck ^= bit[position & 63];
        });
        if (stuck == 0) continue;
        open[row] ^= stuck;
        lost[row] = stuck & Row(material, layout, pair, row).attackedBy(mover ^ 1U);
        forEachIn(row, stuck ^ lost[row],
                  [&](std::size_t position) { worth[position] = DrawnWorth; });
        side.newLost.isUsed[pair] |= lost[row] != 0 ? 1 : 0;
        count += tally(pair, row, lost[row]);
    }
    for (const Passing& passing : side.passings[pair]) {
        count += isLost(pair, mover, passing, 0) ? 2 : 0;
    }
    return count;
}

/// Finds the losses in a distance above 0.
std::uint64_t Retrograde::findLosses(unsigned pair, unsigned mover, unsigned distance,
                                     Block& from) {
    Side& side = sides[mover];
    const unsigned other = mover ^ 1U;
    const Worth loss = lossWorth(distance);
    const Worth win = winWorth(distance);
    side.newLost.isUsed[pair] = 0;
    if (!expects(pair, mover, loss) && !sides[other].expectedPassing[pair][win] &&
        !predecessors.canReach(pair, mover, sides[other].hasNewWins)) {
        return 0;
    }
    // What is left are positions with no move that avoids a known win.
    findPredecessors(
        pair, mover, sides[other].notWon,
        [&](const Passing& passing) {
            return !isWon(pair, other, passing) && passing.capture < win;
        },
        from);
    Bitboard* const open = side.open.block(pair);
    Bitboard* const lost = side.newLost.block(pair);
    Worth* const worth = worthsOf(pair, mover);
    std::uint64_t count = 0;
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        lost[row] = open[row] & ~from[row];
        if (lost[row] == 0) continue;
        forEachIn(row, lost[row], [&](std::size_t position) {
            // A conversion may hold out longer; the position is then lost at that later distance.
            if (worth[position] > loss) {
                lost[row] ^= bit[position & 63];
            } else {
                worth[position] = loss;
            }
        });
        open[row] ^= lost[row];
        side.newLost.isUsed[pair] |= lost[row] != 0 ? 1 : 0;
        count += tally(pair, row, lost[row]);
    }
    for (const Passing& passing : side.passings[pair]) {
        const bool isNew =
            isLost(pair, mover, passing, distance) && !isLost(pair, mover, passing, distance - 1);
        count += isNew ? 2 : 0;
    }
    return count;
}

/// Finds the wins in a distance above 0.
std::uint64_t Retrograde::findWins(unsigned pair, unsigned mover, unsigned distance, Block& from) {
    Side& side = sides[mover];
    const unsigned other = mover ^ 1U;
    const Worth loss = lossWorth(distance - 1);
    const Worth win = winWorth(distance);
    side.hasNewWins[pair] = 0;
    if (!expects(pair, mover, win) && !sides[other].expectedPassing[pair][loss] &&
        !predecessors.canReach(pair, mover, sides[other].newLost.isUsed)) {
        return 0;
    }
    findPredecessors(
        pair, mover, sides[other].newLost,
        [&](const Passing& passing) { return isLost(pair, other, passing, distance - 1); }, from);
    addConversions(pair, mover, win, from);
    Bitboard* const notWon = side.notWon.block(pair);
    Bitboard* const open = side.open.block(pair);
    Worth* const worth = worthsOf(pair, mover);
    std::uint64_t count = 0;
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        const Bitboard won = notWon[row] & from[row];
        if (won == 0) continue;
        forEachIn(row, won, [&](std::size_t position) { worth[position] = win; });
        notWon[row] ^= won;
        open[row] &= ~won;
        side.hasNewWins[pair] = 1;
        count += tally(pair, row, won);
    }
    for (const Passing& passing : side.passings[pair]) {
        const Worth plain = isWon(pair, mover, passing) ? worth[passing.plain] : NoWorth;
        count += passing.worth(plain) == win ? 2 : 0;
    }
    return count;
}

/// Sets `from` to the positions from which a move leads into the set, or to a position of the other
/// side with an en passant square for which isIn(passing) is true.
template <typename Test>
void Retrograde::findPredecessors(unsigned pair, unsigned mover, const PositionSet& into, Test isIn,
                                  Block& from) const {
    predecessors.find(pair, mover, into, from.data());
    for (const Passing& passing : sides[mover ^ 1U].passings[pair]) {
        if (isIn(passing)) insert(from.data(), passing.origin);
    }
}

/// Adds the positions that have a conversion of this worth.
void Retrograde::addConversions(unsigned pair, unsigned mover, Worth worth, Block& from) const {
    const std::size_t length = std::min(rowsPerPair, RowsInGroup) << 6;
    const Worth* const first = worths[mover].get() + firstOf(pair);
    for (std::size_t group = 0; group < groupsPerPair; ++group) {
        if (!sides[mover].expected[pair * groupsPerPair + group][worth]) continue;
        const Worth* const end = first + (group + 1) * length;
        const Worth* next = end - length;
        while ((next = static_cast<const Worth*>(
                    std::memchr(next, worth, static_cast<std::size_t>(end - next)))) != nullptr) {
            insert(from.data(), static_cast<std::size_t>(next - first));
            if (++next == end) break;
        }
    }
}

/// Whether positions of the pair may have a conversion of this worth, in passing or not.
bool Retrograde::expects(unsigned pair, unsigned mover, Worth worth) const {
    const Side& side = sides[mover];
    const auto first = side.expected.begin() + static_cast<std::ptrdiff_t>(pair * groupsPerPair);
    return side.expectedPassing[pair][worth] ||
           std::any_of(first, first + static_cast<std::ptrdiff_t>(groupsPerPair),
                       [worth](const WorthSet& set) { return set[worth]; });
}

/// Whether the plain position is won.
bool Retrograde::isWon(unsigned pair, unsigned mover, const Passing& passing) const {
    return !contains(sides[mover].notWon.block(pair), passing.plain);
}

/// Whether the position is lost in the distance or less.
bool Retrograde::isLost(unsigned pair, unsigned mover, const Passing& passing,
                        unsigned distance) const {
    if (passing.capture > lossWorth(distance)) return false;
    if (passing.captureIsOnlyMove) return true;
    return worths[mover][firstOf(pair) + passing.plain] <= lossWorth(distance) &&
           !contains(sides[mover].open.block(pair), passing.plain) && !isWon(pair, mover, passing);
}

/// Counts positions twice, so that half of one can be counted: of two positions in a block that are
/// reflections of each other, each is half of one.
std::uint64_t Retrograde::tally(unsigned pair, std::size_t row, Bitboard found) const {
    auto count = static_cast<std::uint64_t>(std::popcount(found));
    if (!layout.isMirrored(pair)) return 2 * count;
    forEachIn(row, found, [&](std::size_t position) {
        count += isItsOwnMirror(material, layout.squares(firstOf(pair) + position)) ? 1 : 0;
    });
    return count;
}

/// Turns worths into bytes of the files.
void Retrograde::settle(unsigned pair, unsigned mover) {
    const Bitboard* const notWon = sides[mover].notWon.block(pair);
    const Bitboard* const open = sides[mover].open.block(pair);
    Worth* const worth = worthsOf(pair, mover);
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        for (std::size_t square = 0; square < 64; ++square) {
            Worth& here = worth[row << 6 | square];
            const bool isWonOrIllegal = (notWon[row] & bit[square]) == 0;
            if (isWonOrIllegal) {
                here = here == NoWorth ? BrokenByte : byteOf(outcomeOfWorth(here));
            } else {
                const bool isLost = here < DrawnWorth && (open[row] & bit[square]) == 0;
                here = byteOf(isLost ? outcomeOfWorth(here) : Draw);
            }
        }
    }
}

Outcome Retrograde::passingOutcome(const Position& position) const {
    const std::uint64_t index = layout.index(position.squares);
    const Outcome plain = outcomeOf(worths[position.mover][index]);
    std::size_t pawn = 2;
    while (position.squares[pawn] != position.ep + pawnStep(position.mover ^ 1U)) ++pawn;
    const Worth capture = conversions.enPassant(position.squares, pawn);
    if (capture == NoWorth) return plain;
    const auto pair = static_cast<unsigned>(index / firstOf(1));
    // Only the losing capture of a stalemated side is not the better one of the two.
    const bool isForced =
        plain == Draw && capture < DrawnWorth &&
        std::any_of(sides[position.mover].passings[pair].begin(),
                    sides[position.mover].passings[pair].end(), [&](const Passing& passing) {
                        return passing.captureIsOnlyMove && passing.plain == index - firstOf(pair);
                    });
    return outcomeOfWorth(isForced ? capture : std::max(capture, worthOf(plain)));
}

}  // namespace brivok::tables
