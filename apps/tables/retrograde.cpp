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

const Worth* find(const Worth* begin, const Worth* end, Worth worth) {
    const void* const found = std::memchr(begin, worth, static_cast<std::size_t>(end - begin));
    return found == nullptr ? end : static_cast<const Worth*>(found);
}

const WideWorth* find(const WideWorth* begin, const WideWorth* end, WideWorth worth) {
    return std::find(begin, end, worth);
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

template <typename W>
Retrograde<W>::Side::Side(const Layout& layout)
    : notWon(layout),
      open(layout),
      newLost(layout),
      hasNewWins(layout.pairs()),
      expected(layout.pairs() * std::max<std::size_t>(1, layout.rowsPerPair() / RowsInGroup)),
      expectedPassing(layout.pairs()),
      passings(layout.pairs()) {
    std::fill(notWon.isUsed.begin(), notWon.isUsed.end(), std::uint8_t{1});
}

template <typename W>
Retrograde<W>::Retrograde(int id, TableStore& store, unsigned itsThreads,
                          const std::filesystem::path& scratch)
    : material(materialOf(descriptorOf(id).signature())),
      threads(itsThreads),
      layout(material.count, material.hasPawns()),
      rowsPerPair(layout.rowsPerPair()),
      groupsPerPair(std::max<std::size_t>(1, rowsPerPair / RowsInGroup)),
      predecessors(material, layout),
      places(material, layout),
      conversions(material, isSameForBoth(id) ? 1 : 2, layout, store, threads),
      twins(exchangesOf(material).size()) {
    if (isSameForBoth(id) && !material.hasPawns()) colours.emplace(material, layout);
    for (unsigned mover = 0; mover < (colours ? 1 : 2); ++mover) {
        sides.emplace_back(layout);
        // Left unset: the threads that examine the blocks are the first to touch these pages.
        worths.push_back(std::make_unique<ScratchMemory>(
            layout.pairs() * places.perPair() * sizeof(W), scratch));
    }
}

template <typename W>
void Retrograde<W>::solve(const Progress& progress) {
    inBlocks([this](unsigned pair, Block&) {
        examine(pair);
        return 0;
    });
    const unsigned furthest = furthestConversion();
    std::uint64_t losses = forBothSides([this](unsigned pair, unsigned mover, Block& from) {
        return findMates(pair, mover, from);
    });
    for (unsigned distance = 0; distance < LongestWinIn<W>; ++distance) {
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
    // The last losses may be too long for an entry, which then tells no value.
    if (losses != 0) requireNoFurtherWins();
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

/// Throws AppError if a position can move to one that was found lost in the last distance, and is
/// not known to be won: it would be won in more moves than an entry can hold.
template <typename W>
void Retrograde<W>::requireNoFurtherWins() {
    constexpr unsigned Longest = LongestWinIn<W>;
    const std::uint64_t wins = forBothSides([this](unsigned pair, unsigned mover, Block& from) {
        findPredecessors(
            pair, mover, opponents(mover).newLost,
            [&](const Passing& passing) { return isLost(pair, mover ^ 1U, passing, Longest); },
            from);
        const Bitboard* const notWon = sides[mover].notWon.block(pair);
        std::uint64_t rows = 0;
        for (std::size_t row = 0; row < rowsPerPair; ++row) {
            rows += (notWon[row] & from[row]) != 0 ? 1 : 0;
        }
        return rows;
    });
    if (wins != 0) {
        throw AppError("a mate takes more moves than the " + std::to_string(Longest) +
                       " that an entry can hold");
    }
}

/// Calls work(pair, mover, space for a block), which changes only what is known of that block with
/// that side to move, for all pairs with one side, then with the other if it is kept. Returns the
/// sum of the results.
template <typename W>
template <typename Work>
std::uint64_t Retrograde<W>::forBothSides(Work work) {
    std::uint64_t sum = 0;
    for (unsigned mover = 0; mover < sides.size(); ++mover) {
        sum += inBlocks([&](unsigned pair, Block& space) { return work(pair, mover, space); });
    }
    return sum;
}

/// Calls work(pair, space for a block) for all pairs, and returns the sum of the results.
template <typename W>
template <typename Work>
std::uint64_t Retrograde<W>::inBlocks(Work work) {
    std::atomic<std::uint64_t> sum = 0;
    constexpr std::uint64_t RowsInPiece = 1024;
    inParallel(
        threads, layout.pairs(),
        [&](std::uint64_t begin, std::uint64_t end) {
            Block space(colours ? 2 * rowsPerPair : rowsPerPair);
            for (std::uint64_t pair = begin; pair < end; ++pair) {
                sum += static_cast<std::uint64_t>(work(static_cast<unsigned>(pair), space));
            }
        },
        std::max<std::uint64_t>(1, RowsInPiece / rowsPerPair));
    return sum;
}

/// Finds the legal positions of a block, and what their conversions are worth.
template <typename W>
void Retrograde<W>::examine(unsigned pair) {
    for (std::size_t number = 0; number < rowsPerPair; ++number) {
        if (!places.isSorted(number) && !material.hasEnPassant()) {
            for (Side& side : sides) {
                Bitboard* const notWon = side.notWon.block(pair);
                Bitboard* const open = side.open.block(pair);
                notWon[number] = notWon[places.sorted(number)];
                open[number] = open[places.sorted(number)];
            }
            continue;
        }
        const Row row(material, layout, pair, number);
        for (unsigned mover = 0; mover < sides.size(); ++mover) examineRow(row, mover);
    }
}

template <typename W>
void Retrograde<W>::examineRow(const Row& row, unsigned mover) {
    Side& side = sides[mover];
    const Bitboard legal = row.legal(mover);
    side.notWon.block(row.pair)[row.number] = legal;
    std::array<Worth, 64> found{};
    Bitboard open = legal;
    if (legal != 0) {
        conversions.rate(row.squares, mover, legal, found.data());
        WorthSet& expected = side.expected[row.pair * groupsPerPair + row.number / RowsInGroup];
        for (std::size_t square = 0; square < 64; ++square) {
            if (found[square] == NoWorth) continue;
            expected[found[square]] = true;
            if (found[square] >= DrawnWorth) open &= ~bit[square];
        }
    }
    side.open.block(row.pair)[row.number] = open;
    if (places.isSorted(row.number)) {
        W* const worth = worthsOf(row.pair, mover) + places.startOf(row.number);
        for (std::size_t square = places.firstKept(row.number); square < 64; ++square) {
            worth[square] = widened<W>(found[square]);
        }
    }
    if (!material.hasEnPassant()) return;
    std::vector<Passing>& passings = side.passings[row.pair];
    const std::size_t listed = passings.size();
    appendPassings(row, mover, conversions, passings);
    for (std::size_t i = listed; i < passings.size(); ++i) {
        side.expectedPassing[row.pair][passings[i].capture] = true;
    }
}

/// The longest distance of a conversion.
template <typename W>
unsigned Retrograde<W>::furthestConversion() const {
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
template <typename W>
std::uint64_t Retrograde<W>::findMates(unsigned pair, unsigned mover, Block& from) {
    Side& side = sides[mover];
    findPredecessors(
        pair, mover, opponents(mover).notWon, [](const Passing&) { return true; }, from);
    Bitboard* const open = side.open.block(pair);
    Bitboard* const lost = side.newLost.block(pair);
    W* const worth = worthsOf(pair, mover);
    for (Passing& passing : side.passings[pair]) {
        passing.captureIsOnlyMove = passing.capture != NoWorth && contains(open, passing.plain) &&
                                    worth[places.of(passing.plain)] == NoWorth &&
                                    !contains(from.data(), passing.plain);
    }
    // From here on, `from` has those without moves.
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        Bitboard stuck = open[row] & ~from[row];
        forEachIn(row, stuck, [&](std::size_t position) {
            if (worth[places.of(position)] != NoWorth) stuck ^= bit[position & 63];
        });
        from[row] = stuck;
    }
    std::uint64_t count = 0;
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        const Bitboard stuck = from[row];
        lost[row] = 0;
        if (stuck == 0) continue;
        open[row] ^= stuck;
        lost[row] = stuck & Row(material, layout, pair, row).attackedBy(mover ^ 1U);
        forEachIn(row, stuck ^ lost[row],
                  [&](std::size_t position) { worth[places.of(position)] = Drawn<W>; });
        side.newLost.isUsed[pair] |= lost[row] != 0 ? 1 : 0;
        count += tally(pair, row, lost[row]);
    }
    for (const Passing& passing : side.passings[pair]) {
        count += isLost(pair, mover, passing, 0) ? 2 : 0;
    }
    return count;
}

/// Finds the losses in a distance above 0.
template <typename W>
std::uint64_t Retrograde<W>::findLosses(unsigned pair, unsigned mover, unsigned distance,
                                        Block& from) {
    Side& side = sides[mover];
    const unsigned other = mover ^ 1U;
    const W loss = lossWorth<W>(distance);
    const W win = winWorth<W>(distance);
    side.newLost.isUsed[pair] = 0;
    if (!expects(pair, mover, loss) && !opponents(mover).expectedPassing[pair][narrowed(win)] &&
        !canReach(pair, mover, opponents(mover).hasNewWins)) {
        return 0;
    }
    // What is left are positions with no move that avoids a known win.
    findPredecessors(
        pair, mover, opponents(mover).notWon,
        [&](const Passing& passing) {
            return !isWon(pair, other, passing) && widened<W>(passing.capture) < win;
        },
        from);
    Bitboard* const open = side.open.block(pair);
    Bitboard* const lost = side.newLost.block(pair);
    W* const worth = worthsOf(pair, mover);
    std::uint64_t count = 0;
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        lost[row] = open[row] & ~from[row];
        if (lost[row] == 0) continue;
        forEachIn(row, lost[row], [&](std::size_t position) {
            W& here = worth[places.of(position)];
            // A conversion may hold out longer; the position is then lost at that later distance.
            if (here > loss) {
                lost[row] ^= bit[position & 63];
            } else {
                here = loss;
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
template <typename W>
std::uint64_t Retrograde<W>::findWins(unsigned pair, unsigned mover, unsigned distance,
                                      Block& from) {
    Side& side = sides[mover];
    const unsigned other = mover ^ 1U;
    const W loss = lossWorth<W>(distance - 1);
    const W win = winWorth<W>(distance);
    side.hasNewWins[pair] = 0;
    if (!expects(pair, mover, win) && !opponents(mover).expectedPassing[pair][narrowed(loss)] &&
        !canReach(pair, mover, opponents(mover).newLost.isUsed)) {
        return 0;
    }
    findPredecessors(
        pair, mover, opponents(mover).newLost,
        [&](const Passing& passing) { return isLost(pair, other, passing, distance - 1); }, from);
    addConversions(pair, mover, win, from);
    Bitboard* const notWon = side.notWon.block(pair);
    Bitboard* const open = side.open.block(pair);
    W* const worth = worthsOf(pair, mover);
    std::uint64_t count = 0;
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        const Bitboard won = notWon[row] & from[row];
        if (won == 0) continue;
        if (places.isSorted(row)) {
            W* const here = worth + places.startOf(row);
            for (Bitboard rest = won & places.keeps(row); rest != 0;) {
                here[takeNext<White>(rest)] = win;
            }
        }
        notWon[row] ^= won;
        open[row] &= ~won;
        side.hasNewWins[pair] = 1;
        count += tally(pair, row, won);
    }
    for (const Passing& passing : side.passings[pair]) {
        const W plain = isWon(pair, mover, passing) ? worth[places.of(passing.plain)] : W{NoWorth};
        count += passing.worth(plain) == win ? 2 : 0;
    }
    return count;
}

/// Sets `from` to the positions from which a move leads into the set, or to a position of the other
/// side with an en passant square for which isIn(passing) is true.
template <typename W>
template <typename Test>
void Retrograde<W>::findPredecessors(unsigned pair, unsigned mover, const PositionSet& into,
                                     Test isIn, Block& from) const {
    findMoves(pair, mover, into, from);
    for (const Passing& passing : opponents(mover).passings[pair]) {
        if (isIn(passing)) insert(from.data(), passing.origin);
    }
}

/// As Predecessors::find(); if colours can be exchanged, `into` has the first side to move, and the
/// second half of `from` is space.
template <typename W>
void Retrograde<W>::findMoves(unsigned pair, unsigned mover, const PositionSet& into,
                              Block& from) const {
    if (!colours) return predecessors.find(pair, mover, into, from.data());
    Bitboard* const space = from.data() + rowsPerPair;
    predecessors.find(colours->of(pair).pair, mover ^ 1U, into, space);
    colours->exchange(pair, space, from.data());
}

template <typename W>
bool Retrograde<W>::canReach(unsigned pair, unsigned mover,
                             const std::vector<std::uint8_t>& pairsOfSet) const {
    return colours ? predecessors.canReach(colours->of(pair).pair, mover ^ 1U, pairsOfSet)
                   : predecessors.canReach(pair, mover, pairsOfSet);
}

/// Adds the positions that have a conversion of this worth.
template <typename W>
void Retrograde<W>::addConversions(unsigned pair, unsigned mover, W worth, Block& from) const {
    const W* const first = worthsOf(pair, mover);
    const std::size_t rows = std::min(rowsPerPair, RowsInGroup);
    for (std::size_t group = 0; group < groupsPerPair; ++group) {
        if (!sides[mover].expected[pair * groupsPerPair + group][narrowed(worth)]) continue;
        std::size_t row = group * rows;
        std::size_t last = row + rows - 1;
        while (!places.isSorted(row)) ++row;
        while (!places.isSorted(last)) --last;
        const W* const end = first + places.endOf(last);
        const W* next = first + places.startOf(row) + places.firstKept(row);
        while ((next = find(next, end, worth)) != end) {
            const auto place = static_cast<std::int32_t>(next - first);
            while (!places.isSorted(row) || place >= places.endOf(row)) ++row;
            const auto square = static_cast<std::size_t>(place - places.startOf(row));
            places.forEachTwin(row << 6 | square,
                               [&](std::size_t position) { insert(from.data(), position); });
            ++next;
        }
    }
}

/// Whether positions of the pair may have a conversion of this worth, in passing or not.
template <typename W>
bool Retrograde<W>::expects(unsigned pair, unsigned mover, W worth) const {
    const Side& side = sides[mover];
    const Worth narrow = narrowed(worth);
    const auto first = side.expected.begin() + static_cast<std::ptrdiff_t>(pair * groupsPerPair);
    return side.expectedPassing[pair][narrow] ||
           std::any_of(first, first + static_cast<std::ptrdiff_t>(groupsPerPair),
                       [narrow](const WorthSet& set) { return set[narrow]; });
}

/// Whether the plain position is won.
template <typename W>
bool Retrograde<W>::isWon(unsigned pair, unsigned mover, const Passing& passing) const {
    return !contains(sides[mover].notWon.block(pair), passing.plain);
}

/// Whether the position is lost in the distance or less.
template <typename W>
bool Retrograde<W>::isLost(unsigned pair, unsigned mover, const Passing& passing,
                           unsigned distance) const {
    if (widened<W>(passing.capture) > lossWorth<W>(distance)) return false;
    if (passing.captureIsOnlyMove) return true;
    return worthsOf(pair, mover)[places.of(passing.plain)] <= lossWorth<W>(distance) &&
           !contains(sides[mover].open.block(pair), passing.plain) && !isWon(pair, mover, passing);
}

/// Counts positions twice, so that half of one can be counted: of two positions in a block that are
/// reflections of each other, each is half of one.
template <typename W>
std::uint64_t Retrograde<W>::tally(unsigned pair, std::size_t row, Bitboard found) const {
    auto count = static_cast<std::uint64_t>(std::popcount(found));
    if (!layout.isMirrored(pair)) return 2 * count;
    forEachIn(row, found, [&](std::size_t position) {
        count += isItsOwnMirror(material, layout.squares(firstOf(pair) + position)) ? 1 : 0;
    });
    return count;
}

/// Turns worths into entries of the files.
template <typename W>
void Retrograde<W>::settle(unsigned pair, unsigned mover) {
    const Bitboard* const notWon = sides[mover].notWon.block(pair);
    const Bitboard* const open = sides[mover].open.block(pair);
    for (std::size_t row = 0; row < rowsPerPair; ++row) {
        if (!places.isSorted(row)) continue;
        W* const worth = worthsOf(pair, mover) + places.startOf(row);
        for (std::size_t square = places.firstKept(row); square < 64; ++square) {
            W& here = worth[square];
            const bool isWonOrIllegal = (notWon[row] & bit[square]) == 0;
            if (isWonOrIllegal) {
                here = entryOf<W>(here == NoWorth ? NoValue : outcomeOfWorth(here));
            } else {
                const bool isLost = here < Drawn<W> && (open[row] & bit[square]) == 0;
                here = entryOf<W>(isLost ? outcomeOfWorth(here) : Draw);
            }
        }
    }
}

template <typename W>
Outcome Retrograde<W>::passingOutcome(const Position& position) const {
    const Outcome plain = outcomeOfEntry(plainEntry(position.squares, position.mover));
    std::size_t pawn = 2;
    while (position.squares[pawn] != position.ep + pawnStep(position.mover ^ 1U)) ++pawn;
    const Worth capture = conversions.enPassant(position.squares, pawn);
    if (capture == NoWorth) return plain;
    const std::uint64_t index = layout.index(position.squares);
    const unsigned pair = layout.pairOf(index);
    const std::size_t place = layout.placeInBlock(index);
    // Only the losing capture of a stalemated side is not the better one of the two.
    const bool isForced =
        plain == Draw && capture < DrawnWorth &&
        std::any_of(sides[position.mover].passings[pair].begin(),
                    sides[position.mover].passings[pair].end(), [&](const Passing& passing) {
                        return passing.captureIsOnlyMove && passing.plain == place;
                    });
    return isForced ? outcomeOfWorth(capture)
                    : outcomeOfWorth(std::max(widened<W>(capture), worthOf<W>(plain)));
}

template class Retrograde<Worth>;
template class Retrograde<WideWorth>;

}  // namespace brivok::tables
