#include "predecessors.h"

#include <algorithm>

#include "board/static_tables.h"
#include "egtb/enumeration.h"
#include "geometry.h"

namespace brivok::tables {
namespace {

struct Direction {
    int files;
    int ranks;
};

using Directions = std::array<Direction, 4>;

constexpr Directions RookDirections = {{{1, 0}, {-1, 0}, {0, 1}, {0, -1}}};
constexpr Directions BishopDirections = {{{1, 1}, {-1, 1}, {1, -1}, {-1, -1}}};

constexpr bool isOnBoard(int file, int rank) {
    return file >= 0 && file < 8 && rank >= 0 && rank < 8;
}

/// The set moved by some squares.
template <int Step>
constexpr Bitboard moved(Bitboard set) {
    return Step > 0 ? set << Step : set >> -Step;
}

/// The set moved by one step in a direction, without what leaves the board.
template <int Files, int Ranks>
constexpr Bitboard stepped(Bitboard set) {
    set = moved<8 * Ranks + Files>(set);
    return Files == 0 ? set : set & ~(Files > 0 ? FileA : FileH);
}

/// Squares from which a slider reaches the set in the direction opposite to this one, through empty
/// squares. Doubles the distance in each line.
template <int Files, int Ranks>
Bitboard slid(Bitboard set, Bitboard empty) {
    constexpr int Step = 8 * Ranks + Files;
    if constexpr (Files != 0) empty &= ~(Files > 0 ? FileA : FileH);
    set |= empty & moved<Step>(set);
    empty &= moved<Step>(empty);
    set |= empty & moved<2 * Step>(set);
    empty &= moved<2 * Step>(empty);
    set |= empty & moved<4 * Step>(set);
    return stepped<Files, Ranks>(set);
}

Bitboard slidByRook(Bitboard set, Bitboard empty) {
    return slid<1, 0>(set, empty) | slid<-1, 0>(set, empty) | slid<0, 1>(set, empty) |
           slid<0, -1>(set, empty);
}

Bitboard slidByBishop(Bitboard set, Bitboard empty) {
    return slid<1, 1>(set, empty) | slid<-1, 1>(set, empty) | slid<1, -1>(set, empty) |
           slid<-1, -1>(set, empty);
}

Bitboard leapt(Bitboard set) {
    const Bitboard one = stepped<1, 0>(set) | stepped<-1, 0>(set);
    const Bitboard two = stepped<1, 0>(stepped<1, 0>(set)) | stepped<-1, 0>(stepped<-1, 0>(set));
    return one << 16 | one >> 16 | two << 8 | two >> 8;
}

Bitboard pawnStepped(Bitboard set, int step) { return step > 0 ? set << 8 : set >> 8; }

}  // namespace

Predecessors::Predecessors(const Material& itsMaterial, const Layout& itsLayout)
    : material(itsMaterial), layout(itsLayout), last(itsMaterial.count - 1) {
    const auto addRays = [this](std::size_t man, const Directions& directions) {
        for (const auto [files, ranks] : directions) {
            for (int edge = 0; edge < 64; ++edge) {
                int file = edge & 7;
                int rank = edge >> 3;
                if (isOnBoard(file + files, rank + ranks)) continue;
                Ray ray;
                for (; isOnBoard(file, rank); file -= files, rank -= ranks) {
                    ray.squares[ray.length++] = static_cast<std::uint8_t>(8 * rank + file);
                }
                raysOf[man].push_back(ray);
            }
        }
    };
    for (std::size_t man = 2; man < last; ++man) {
        const Kind kind = material.man[man];
        if (kind == Kind::Rook || kind == Kind::Queen) addRays(man, RookDirections);
        if (kind == Kind::Bishop || kind == Kind::Queen) addRays(man, BishopDirections);
    }
    for (unsigned mover = 0; mover < 2; ++mover) {
        kingSteps[mover].resize(layout.pairs());
        for (unsigned pair = 0; pair < layout.pairs(); ++pair) {
            std::array<std::uint8_t, 2> kings = layout.kingsOf(pair);
            Bitboard targets = kingAttacks[kings[mover]];
            while (targets != 0) {
                kings[mover] = static_cast<std::uint8_t>(takeNext<White>(targets));
                const auto reduction = layout.reduce(kings[0], kings[1]);
                if (reduction.pair != KingPairs::Missing) {
                    kingSteps[mover][pair].push_back(reduction);
                }
            }
        }
    }
}

bool Predecessors::canReach(unsigned pair, unsigned mover,
                            const std::vector<std::uint8_t>& pairsOfSet) const {
    const auto& steps = kingSteps[mover][pair];
    return pairsOfSet[pair] != 0 || std::any_of(steps.begin(), steps.end(), [&](const auto& step) {
               return pairsOfSet[step.pair] != 0;
           });
}

void Predecessors::find(unsigned pair, unsigned mover, const PositionSet& into,
                        Bitboard* from) const {
    std::fill_n(from, layout.rowsPerPair(), 0);
    findByKing(pair, mover, into, from);
    if (into.isUsed[pair] == 0) return;
    for (std::size_t man = 2; man < last; ++man) {
        if (material.side[man] == mover) findByOuter(pair, man, into.block(pair), from);
    }
    if (material.side[last] == mover) findByLast(pair, into.block(pair), from);
}

void Predecessors::findByKing(unsigned pair, unsigned mover, const PositionSet& into,
                              Bitboard* from) const {
    const std::size_t rows = layout.rowsPerPair();
    for (const auto& [after, symmetry] : kingSteps[mover][pair]) {
        if (into.isUsed[after] == 0) continue;
        const Bitboard* const block = into.block(after);
        if (symmetry == 0) {
            for (std::size_t row = 0; row < rows; ++row) from[row] |= block[row];
            continue;
        }
        const Layout::Image& image = layout.image(symmetry);
        const std::size_t rowsInGroup = std::min<std::size_t>(rows, 64);
        for (std::size_t first = 0; first < rows; first += rowsInGroup) {
            std::size_t turned = 0;
            for (unsigned shift = 6; rows >> shift > 1; shift += 6) {
                turned |= std::size_t{image[first >> shift & 63]} << shift;
            }
            for (std::size_t i = 0; i < rowsInGroup; ++i) {
                const Bitboard set = block[rows == 1 ? 0 : turned | image[i]];
                if (set != 0) from[first + i] |= Layout::origins(set, symmetry);
            }
        }
    }
}

/// The squares of the men before the moving one are the highest digits of a row's number, those of
/// the men after it the lowest.
void Predecessors::findByOuter(unsigned pair, std::size_t man, const Bitboard* into,
                               Bitboard* from) const {
    const unsigned mover = material.side[man];
    const auto [first, second] = layout.kingsOf(pair);
    Still still;
    still.lastIsEnemyPawn = isEnemyPawn(last, mover);
    const std::size_t inner = last - 1 - man;
    for (std::size_t i = 0; i < inner; ++i) {
        still.innerIsEnemyPawn[i] = isEnemyPawn(man + 1 + i, mover);
    }
    const std::size_t rows = std::size_t{64} << 6 * inner;
    for (std::size_t before = 0; before * rows < layout.rowsPerPair(); ++before) {
        still.blockers = bit[first] | bit[second];
        still.noDoubleStep = 0;
        forEachOuter(before, man, [&](std::size_t other, std::size_t square) {
            still.blockers |= bit[square];
            if (isEnemyPawn(other, mover)) still.noDoubleStep |= besides(bit[square]);
        });
        const Bitboard* const targets = into + before * rows;
        Bitboard* const origins = from + before * rows;
        switch (inner) {
            case 0: findByMan<1>(man, still, targets, origins); break;
            case 1: findByMan<64>(man, still, targets, origins); break;
            default: findByMan<4096>(man, still, targets, origins);
        }
    }
}

template <std::size_t Inner>
void Predecessors::findByMan(std::size_t man, const Still& still, const Bitboard* into,
                             Bitboard* from) const {
    switch (material.man[man]) {
        case Kind::Pawn: findByPawn<Inner>(material.side[man], still, into, from); break;
        case Kind::Knight:
            for (std::size_t origin = 0; origin < 64; ++origin) {
                Bitboard targets = knightAttacks[origin];
                while (targets != 0) {
                    const auto target = static_cast<std::size_t>(takeNext<White>(targets));
                    for (std::size_t row = 0; row < Inner; ++row) {
                        from[origin * Inner + row] |= into[target * Inner + row];
                    }
                }
            }
            break;
        default: findBySlider<Inner>(still, raysOf[man], into, from); break;
    }
}

template <std::size_t Inner>
void Predecessors::findBySlider(const Still& still, const std::vector<Ray>& rays,
                                const Bitboard* into, Bitboard* from) const {
    for (const Ray& ray : rays) {
        std::array<Bitboard, Inner> reaching{};
        for (std::size_t i = 0; i + 1 < ray.length; ++i) {
            const std::size_t target = ray.squares[i];
            const Bitboard* const targets = into + target * Inner;
            const std::size_t origin = ray.squares[i + 1];
            Bitboard* const origins = from + origin * Inner;
            const Bitboard empty = (still.blockers & bit[target]) != 0 ? 0 : ~bit[target];
            for (std::size_t row = 0; row < Inner; ++row) {
                reaching[row] = targets[row] | (reaching[row] & empty);
            }
            // Where an inner man stands in the way.
            if constexpr (Inner >= 64) std::fill_n(&reaching[target * (Inner / 64)], Inner / 64, 0);
            if constexpr (Inner == 4096) {
                for (std::size_t row = target; row < Inner; row += 64) reaching[row] = 0;
            }
            for (std::size_t row = 0; row < Inner; ++row) origins[row] |= reaching[row];
        }
    }
}

template <std::size_t Inner>
void Predecessors::findByPawn(unsigned mover, const Still& still, const Bitboard* into,
                              Bitboard* from) const {
    const int step = pawnStep(mover);
    for (Square origin = 8; origin < 56; ++origin) {
        const Bitboard* const one = into + static_cast<std::size_t>(origin + step) * Inner;
        Bitboard* const origins = from + static_cast<std::size_t>(origin) * Inner;
        for (std::size_t row = 0; row < Inner; ++row) origins[row] |= one[row];
        const Square middle = origin + step;
        const Square target = middle + step;
        if (origin >> 3 != pawnHome(mover) || (still.blockers & bit[middle]) != 0 ||
            (still.noDoubleStep & bit[target]) != 0) {
            continue;
        }
        const Bitboard* const two = into + static_cast<std::size_t>(target) * Inner;
        const Bitboard beside = besides(bit[target]);
        const auto squaresFor = [&](bool isEnemy) {
            return ~(bit[middle] | (isEnemy ? beside : 0));
        };
        const std::array inner = {squaresFor(still.innerIsEnemyPawn[0]),
                                  squaresFor(still.innerIsEnemyPawn[1])};
        const Bitboard lasts = squaresFor(still.lastIsEnemyPawn);
        for (std::size_t row = 0; row < Inner; ++row) {
            const std::size_t square = Inner == 4096 ? row >> 6 : row;
            if (Inner >= 64 && (inner[0] >> square & 1) == 0) continue;
            if (Inner == 4096 && (inner[1] >> (row & 63) & 1) == 0) continue;
            origins[row] |= two[row] & lasts;
        }
    }
}

void Predecessors::findByLast(unsigned pair, const Bitboard* into, Bitboard* from) const {
    const unsigned mover = material.side[last];
    const auto [first, second] = layout.kingsOf(pair);
    const Bitboard kings = bit[first] | bit[second];
    const auto inEachRow = [&](auto origins) {
        const std::size_t rowsInGroup = std::min<std::size_t>(layout.rowsPerPair(), 64);
        for (std::size_t group = 0; group < layout.rowsPerPair(); group += rowsInGroup) {
            Bitboard empty = ~kings;
            forEachOuter(group >> 6, last - 1,
                         [&](std::size_t, std::size_t square) { empty &= ~bit[square]; });
            for (std::size_t i = 0; i < rowsInGroup; ++i) {
                const std::size_t row = group + i;
                if (into[row] == 0) continue;
                from[row] |= origins(into[row], last == 2 ? empty : empty & ~bit[i], row);
            }
        }
    };
    switch (material.man[last]) {
        case Kind::Queen:
            inEachRow([](Bitboard set, Bitboard empty, std::size_t) {
                return slidByRook(set, empty) | slidByBishop(set, empty);
            });
            break;
        case Kind::Rook:
            inEachRow(
                [](Bitboard set, Bitboard empty, std::size_t) { return slidByRook(set, empty); });
            break;
        case Kind::Bishop:
            inEachRow(
                [](Bitboard set, Bitboard empty, std::size_t) { return slidByBishop(set, empty); });
            break;
        case Kind::Knight:
            inEachRow([](Bitboard set, Bitboard, std::size_t) { return leapt(set); });
            break;
        default: {
            const int back = -pawnStep(mover);
            const Bitboard doubled = rowMask[pawnHome(mover) - 2 * back / 8];
            inEachRow([&](Bitboard set, Bitboard empty, std::size_t row) {
                Bitboard twice = set & doubled;
                forEachOuter(row, last, [&](std::size_t man, std::size_t square) {
                    if (isEnemyPawn(man, mover)) twice &= ~besides(bit[square]);
                });
                return pawnStepped(set, back) | pawnStepped(pawnStepped(twice, back) & empty, back);
            });
        }
    }
}

}  // namespace brivok::tables
