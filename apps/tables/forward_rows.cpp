#include "forward_rows.h"

#include <algorithm>
#include <cstring>

#include "board/static_tables.h"
#include "geometry.h"

namespace brivok::tables {
namespace {

/// The squares from one towards the edge of the board, nearest first.
struct Line {
    std::uint8_t count = 0;
    std::array<std::uint8_t, 7> squares{};
};

/// By square: first the four along files and ranks, then the four diagonals.
constexpr auto Lines = [] {
    constexpr std::array<std::array<int, 2>, 8> Directions = {
        {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}}};
    std::array<std::array<Line, 8>, 64> lines{};
    for (int square = 0; square < 64; ++square) {
        for (std::size_t direction = 0; direction < 8; ++direction) {
            Line& line = lines[static_cast<std::size_t>(square)][direction];
            int file = square & 7;
            int rank = square >> 3;
            for (;;) {
                file += Directions[direction][0];
                rank += Directions[direction][1];
                if (file < 0 || file > 7 || rank < 0 || rank > 7) break;
                line.squares[line.count++] = static_cast<std::uint8_t>(rank * 8 + file);
            }
        }
    }
    return lines;
}();

std::size_t indexOf(Square square) { return static_cast<std::size_t>(square); }

}  // namespace

CheckedTable::CheckedTable(int id, const Material& itsMaterial, TableStore& store, unsigned threads)
    : material(itsMaterial),
      layout(itsMaterial.count, itsMaterial.hasPawns()),
      entries{store.entries(id, 0), store.entries(id, 1)},
      plain{LeavingWorths(id, material, layout, 0, entries[0], threads),
            LeavingWorths(id, material, layout, 1, entries[1], threads)},
      conversions(material, layout, store, threads),
      finder(material) {}

Worth CheckedTable::leaving(const Position& position) const {
    if (position.ep == NoEnPassant) return plain[position.mover][layout.index(position.squares)];
    const std::uint64_t index = finder.find(position.squares, position.mover, position.ep).index;
    const auto& file = entries[position.mover];
    return index < file.size() ? worthOfLeaving(outcomeOf(file[index])) : NoWorth;
}

Worth CheckedTable::leavingBySuccessors(const Position& position) const {
    const LegalMoves moves(material, position);
    bool canMove = false;
    Worth best = NoWorth;
    moves.forEachConversion([&](const Squares& squares, const Conversion& conversion) {
        canMove = true;
        best =
            std::max(best, conversions.worth({conversion.captured, conversion.promoted}, squares));
    });
    for (std::size_t man = 0; man < material.count; ++man) {
        for (Bitboard quiet = moves.quiet(man); quiet != 0;) {
            canMove = true;
            const Square to = takeNext<White>(quiet);
            best = std::max(best, leaving(positionAfter(material, position, man, to)));
        }
    }
    // Every move may lead to a broken entry, though it should not.
    if (canMove && best == NoWorth) return DrawnWorth;
    return leavingIfBestIs(best, moves.inCheck());
}

ForwardRows::ForwardRows(const CheckedTable& itsTable, unsigned itsPair, unsigned itsMover)
    : table(itsTable),
      material(itsTable.material),
      pair(itsPair),
      mover(itsMover),
      last(itsTable.material.count - 1),
      others(itsTable.plain[itsMover ^ 1U].block(itsPair)) {
    auto kings = table.layout.kingsOf(pair);
    squares[0] = kings[0];
    squares[1] = kings[1];
    for (Bitboard steps = kingAttacks[kings[mover]]; steps != 0;) {
        const Square to = takeNext<White>(steps);
        kings[mover] = static_cast<std::uint8_t>(to);
        const auto [next, symmetry] = table.layout.reduce(kings[0], kings[1]);
        if (next >= table.layout.pairs()) continue;
        kingSteps.push_back({static_cast<std::uint8_t>(to), symmetry, next});
    }
}

bool ForwardRows::expect(std::size_t number, RowBytes& expected) {
    row = number;
    lostTooFarAway = 0;
    const Bitboard possible = placeMen(number);
    for (std::size_t man = 3; man < last; ++man) {
        if (material.likeTheOneBefore(man) && squares[man - 1] > squares[man]) return false;
    }
    const Bitboard legal = possible == 0 ? 0 : possible & ~attackedBy(mover);
    if (legal == 0) {
        expected.at.fill(NoWorth);
        return true;
    }
    best.at.fill(NoWorth);
    moveKing();
    for (std::size_t man = 2; man < last; ++man) {
        if (material.side[man] == mover) move(man);
    }
    if (material.side[last] == mover) moveLast();
    leaveBest(legal, expected);
    return true;
}

/// leavingIfBestIs() for a whole row, so that compilers can work on many bytes at once; looks
/// closer only where that finds stalemates or losses in 127.
void ForwardRows::leaveBest(Bitboard legal, RowBytes& expected) {
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint8_t worth = best.at[i];
        const auto left = static_cast<std::uint8_t>(worth >= DrawnWorth ? -worth : ~worth);
        expected.at[i] = worth == lossWorth(LongestByteLoss + 1) ? NoWorth : left;
    }
    const RowBytes legalOnes = maskOf(legal);
    std::uint8_t stuck = 0;
    std::uint8_t tooFarAway = 0;
    for (std::size_t i = 0; i < 64; ++i) {
        stuck |= best.at[i] == NoWorth ? legalOnes.at[i] : std::uint8_t{0};
        tooFarAway |= expected.at[i] == NoWorth ? legalOnes.at[i] : std::uint8_t{0};
        expected.at[i] &= legalOnes.at[i];
    }
    if (stuck != 0) {
        Bitboard stalemates = legal & ~attackedBy(mover ^ 1U);
        while (stalemates != 0) {
            const std::size_t square = indexOf(takeNext<White>(stalemates));
            if (best.at[square] == NoWorth) expected.at[square] = DrawnWorth;
        }
    }
    if (tooFarAway != 0) {
        for (Bitboard rest = legal; rest != 0;) {
            const Square square = takeNext<White>(rest);
            if (expected.at[indexOf(square)] == NoWorth) lostTooFarAway |= bit[square];
        }
    }
}

/// Places the men of a row but the last, and returns the squares that the last may stand on.
Bitboard ForwardRows::placeMen(std::size_t number) {
    Bitboard possible = material.man[last] == Kind::Pawn ? ~OuterRanks : ~Bitboard{0};
    occupied = bit[squares[0]] | bit[squares[1]];
    for (std::size_t man = last; man-- > 2;) {
        squares[man] = static_cast<std::uint8_t>(number & 63);
        number >>= 6;
        const Bitboard forbidden =
            material.man[man] == Kind::Pawn ? occupied | OuterRanks : occupied;
        if ((forbidden & bit[squares[man]]) != 0) possible = 0;
        occupied |= bit[squares[man]];
    }
    return possible & ~occupied;
}

/// The squares of the last man with which the side attacks the other king.
Bitboard ForwardRows::attackedBy(unsigned side) const {
    const Square king = squares[side ^ 1U];
    Bitboard attacked = 0;
    for (std::size_t man = 2; man < last; ++man) {
        if (material.side[man] != side) continue;
        const Square from = squares[man];
        if ((attacksOf(material.man[man], side, from, occupied) & bit[king]) != 0) {
            attacked |= ~between[from][king];
        }
    }
    if (material.side[last] != side) return attacked;
    // Attacks are mutual, except that pawns look the other way.
    return attacked | attacksOf(material.man[last], side ^ 1U, king, occupied);
}

void ForwardRows::raiseAt(Square ofLast, Worth worth) {
    Worth& here = best.at[indexOf(ofLast)];
    here = std::max(here, worth);
}

/// The row, with the other side to move, after a man other than a king has moved.
const Worth* ForwardRows::rowAfter(std::size_t man, Square to) const {
    const std::size_t place = 6 * (last - man - 1);
    const std::size_t changed = (std::size_t{squares[man]} ^ indexOf(to)) << place;
    return others + ((row ^ changed) << 6);
}

void ForwardRows::moveKing() {
    for (const auto& [to, symmetry, next] : kingSteps) {
        Squares after = squares;
        after[mover] = to;
        if ((occupied & bit[to]) != 0) {
            for (std::size_t victim = 2; victim < last; ++victim) {
                if (squares[victim] != to || material.side[victim] == mover) continue;
                const Layout::Image& image = table.layout.image(symmetry);
                for (std::size_t man = 0; man < last; ++man) after[man] = image[after[man]];
                const Worth* const results = table.conversions.row({victim, 0}, next, after);
                if (symmetry == 0) {
                    raise(best, results);
                } else {
                    raise(best, permuted(results, symmetry));
                }
            }
            continue;
        }
        const Layout::Image& image = table.layout.image(symmetry);
        std::size_t number = 0;
        for (std::size_t man = 2; man < last; ++man) number = number << 6 | image[squares[man]];
        const Worth* const results = table.plain[mover ^ 1U].block(next) + (number << 6);
        if (symmetry == 0) {
            raise(best, results);
        } else {
            raise(best, permuted(results, symmetry));
        }
        if (material.side[last] != mover) {
            raiseAt(to, table.conversions.worth({last, 0}, after));
        }
    }
}

void ForwardRows::move(std::size_t man) {
    const Square from = squares[man];
    if (material.man[man] == Kind::Pawn) {
        push(man);
    } else if (material.man[man] == Kind::Knight) {
        for (Bitboard to = knightAttacks[from] & ~occupied; to != 0;) {
            raise(best, rowAfter(man, takeNext<White>(to)));
        }
    } else {
        moveSlider(man);
    }
    capture(man);
}

/// The last man may stand in the way: its own square ends the line.
void ForwardRows::moveSlider(std::size_t man) {
    const std::size_t first = material.man[man] == Kind::Bishop ? 4 : 0;
    const std::size_t end = material.man[man] == Kind::Rook ? 4 : 8;
    for (std::size_t way = first; way < end; ++way) {
        const Line& line = Lines[squares[man]][way];
        std::size_t reach = 0;
        while (reach < line.count && (occupied & bit[line.squares[reach]]) == 0) ++reach;
        if (reach == 0) continue;
        RowBytes along{};
        while (reach-- > 0) {
            const Square to = line.squares[reach];
            raise(along, rowAfter(man, to));
            keep(along, AllBut[indexOf(to)]);
        }
        raise(best, along);
    }
}

/// The pawn itself if it promotes on the square.
std::size_t ForwardRows::promotedOn(std::size_t man, Square to) const {
    return material.man[man] == Kind::Pawn && (bit[to] & OuterRanks) != 0 ? man : 0;
}

void ForwardRows::push(std::size_t pawn) {
    const Square to = squares[pawn] + pawnStep(mover);
    if ((occupied & bit[to]) != 0) return;
    if (promotedOn(pawn, to) == pawn) {
        Squares after = squares;
        after[pawn] = static_cast<std::uint8_t>(to);
        raise(best, table.conversions.row({0, pawn}, pair, after));
        return;
    }
    raise(best, rowAfter(pawn, to));
    if (squares[pawn] >> 3 == pawnHome(mover)) pushTwice(pawn);
}

Bitboard ForwardRows::pawnsOfOther() const {
    Bitboard pawns = 0;
    for (std::size_t man = 2; man < last; ++man) {
        if (material.man[man] == Kind::Pawn && material.side[man] != mover) {
            pawns |= bit[squares[man]];
        }
    }
    return pawns;
}

void ForwardRows::pushTwice(std::size_t pawn) {
    const Square over = squares[pawn] + pawnStep(mover);
    const Square to = over + pawnStep(mover);
    if ((occupied & bit[to]) != 0) return;
    RowBytes results;
    std::memcpy(results.at.data(), rowAfter(pawn, to), 64);
    // Where the other side could now capture in passing.
    Bitboard passing = 0;
    if ((pawnsOfOther() & besides(bit[to])) != 0) {
        passing = ~Bitboard{0};
    } else if (material.man[last] == Kind::Pawn && material.side[last] != mover) {
        passing = besides(bit[to]);
    }
    if (material.man[last] == Kind::Pawn) passing &= ~OuterRanks;
    passing &= ~(occupied | bit[over] | bit[to]);
    while (passing != 0) {
        const Square ofLast = takeNext<White>(passing);
        results.at[indexOf(ofLast)] = afterDoubleStep(pawn, to, ofLast);
    }
    keep(results, AllBut[indexOf(over)]);
    raise(best, results);
}

Worth ForwardRows::afterDoubleStep(std::size_t pawn, Square to, Square ofLast) const {
    Position after{squares, static_cast<std::uint8_t>(mover ^ 1U)};
    after.squares[last] = static_cast<std::uint8_t>(ofLast);
    after.squares[pawn] = static_cast<std::uint8_t>(to);
    after.ep = epSquareBehind(material, after.squares, pawn);
    return table.leaving(after);
}

void ForwardRows::capture(std::size_t captor) {
    const Bitboard attacked = attacksOf(material.man[captor], mover, squares[captor], occupied);
    for (std::size_t victim = 2; victim < last; ++victim) {
        if (material.side[victim] != mover && (attacked & bit[squares[victim]]) != 0) {
            captureWith(captor, victim);
        }
    }
    if (material.side[last] != mover) captureLast(captor, attacked & ~occupied);
}

void ForwardRows::captureWith(std::size_t captor, std::size_t victim) {
    const Square from = squares[captor];
    const Square to = squares[victim];
    Squares after = squares;
    after[captor] = static_cast<std::uint8_t>(to);
    const Worth* const results =
        table.conversions.row({victim, promotedOn(captor, to)}, pair, after);
    const Bitboard inTheWay = between[from][to];
    if (inTheWay == 0) {
        raise(best, results);
        return;
    }
    RowBytes open;
    std::memcpy(open.at.data(), results, 64);
    keep(open, maskOf(~inTheWay));
    raise(best, open);
}

void ForwardRows::captureLast(std::size_t captor, Bitboard squaresOfLast) {
    Squares after = squares;
    while (squaresOfLast != 0) {
        const Square to = takeNext<White>(squaresOfLast);
        // A pawn has no business on the outer ranks, nor is it promoted by capturing one there.
        if (material.man[last] == Kind::Pawn && (bit[to] & OuterRanks) != 0) continue;
        after[captor] = static_cast<std::uint8_t>(to);
        raiseAt(to, table.conversions.worth({last, promotedOn(captor, to)}, after));
    }
}

void ForwardRows::moveLast() {
    raiseByMovesWithin(best, others + (row << 6), material.man[last], mover, occupied);
    if (material.man[last] == Kind::Pawn) pushLast();
    for (std::size_t victim = 2; victim < last; ++victim) {
        if (material.side[victim] != mover) captureWithLast(victim);
    }
}

/// Double steps and promotions of the last man.
void ForwardRows::pushLast() {
    const int step = pawnStep(mover);
    const Bitboard enemies = pawnsOfOther();
    for (Bitboard home = rowMask[pawnHome(mover)] & ~occupied; home != 0;) {
        const Square from = takeNext<White>(home);
        const Square to = from + 2 * step;
        if ((occupied & (bit[from + step] | bit[to])) != 0) continue;
        const bool isPassing = (enemies & besides(bit[to])) != 0;
        raiseAt(from, isPassing ? afterDoubleStep(last, to, to) : others[row << 6 | indexOf(to)]);
    }
    Squares after = squares;
    for (Bitboard home = rowMask[pawnHome(mover ^ 1U)] & ~occupied; home != 0;) {
        const Square from = takeNext<White>(home);
        if ((occupied & bit[from + step]) != 0) continue;
        after[last] = static_cast<std::uint8_t>(from + step);
        raiseAt(from, table.conversions.worth({0, last}, after));
    }
}

void ForwardRows::captureWithLast(std::size_t victim) {
    const Square to = squares[victim];
    Squares after = squares;
    after[last] = static_cast<std::uint8_t>(to);
    Bitboard from = attacksOf(material.man[last], mover ^ 1U, to, occupied) & ~occupied;
    if (material.man[last] == Kind::Pawn) from &= ~OuterRanks;
    if (from == 0) return;
    const Worth worth = table.conversions.worth({victim, promotedOn(last, to)}, after);
    while (from != 0) raiseAt(takeNext<White>(from), worth);
}

}  // namespace brivok::tables
