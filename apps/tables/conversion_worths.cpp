#include "conversion_worths.h"

#include <algorithm>

#include "board/static_tables.h"
#include "egtb/enumeration.h"
#include "file_walk.h"
#include "geometry.h"

namespace brivok::tables {
namespace {

void raise(Worth& worth, Worth by) { worth = std::max(worth, by); }

/// For each man of a table below, the man of `after` (some of whose men may be Gone) that it is.
std::array<std::size_t, MaxMen> matchMen(const Material& below, const Material& after,
                                         bool swapped) {
    std::array<std::size_t, MaxMen> match{};
    std::array<bool, MaxMen> taken{};
    for (std::size_t man = 0; man < below.count; ++man) {
        std::size_t same = 0;
        while (taken[same] || after.man[same] != below.man[man] ||
               after.side[same] != (below.side[man] ^ (swapped ? 1U : 0U))) {
            ++same;
        }
        taken[same] = true;
        match[man] = same;
    }
    return match;
}

}  // namespace

ConversionWorths::ConversionWorths(const Material& itsMaterial, unsigned movers,
                                   const Layout& itsLayout, TableStore& store, unsigned threads)
    : material(itsMaterial),
      layout(itsLayout),
      last(itsMaterial.count - 1),
      files(itsMaterial, store) {
    for (std::size_t victim = 2; victim < material.count; ++victim) {
        const bool isLike = victim > 2 && material.likeTheOneBefore(victim);
        firstLike[victim] = isLike ? firstLike[victim - 1] : victim;
        const bool isCaptured = (material.side[victim] ^ 1U) < movers;
        if (isCaptured && !isLike) without[victim] = worthsWithout(victim, store, threads);
    }
}

/// The table without a man, its owner to move, in the numbering of the layout.
ConversionWorths::Worths ConversionWorths::worthsWithout(std::size_t victim, TableStore& store,
                                                         unsigned threads) const {
    const Material after = convert(material, {victim, 0, Gone});
    const auto [id, swapped] = tableOf(after);
    Worths worths(layout.size() >> 6, id == 0 ? DrawnWorth : NoWorth);
    if (id == 0) return worths;
    const Material below = materialOf(descriptorOf(id).signature());
    const auto match = matchMen(below, after, swapped);
    const unsigned side = material.side[victim] ^ (swapped ? 1U : 0U);
    const unsigned turn = swapped ? 56 : 0;  // the first side's pawns move up in the file
    const std::size_t symmetries = below.hasPawns() ? 2 : 8;
    const std::vector<Exchange> exchanges = exchangesOf(below);
    const std::vector<std::uint8_t>& bytes = store.entries(id, side);
    FileWalk(id, below, side).visitAll(threads, [&](std::uint64_t index, const Squares& placed) {
        if (index >= bytes.size()) return;
        const Worth worth = worthOfLeaving(outcomeOf(bytes[index]));
        for (const Exchange& exchange : exchanges) {
            Squares squares{};
            for (std::size_t man = 0; man < below.count; ++man) {
                squares[match[exchange[man]]] = static_cast<std::uint8_t>(placed[man] ^ turn);
            }
            setReflections(worths, victim, squares, worth, symmetries);
        }
    });
    return worths;
}

/// Sets the worth of all positions of the layout that are images of one.
void ConversionWorths::setReflections(Worths& worths, std::size_t victim, const Squares& squares,
                                      Worth worth, std::size_t symmetries) const {
    for (std::size_t symmetry = 0; symmetry < symmetries; ++symmetry) {
        const Layout::Image& image = layout.image(symmetry);
        const auto there = layout.reduce(image[squares[0]], image[squares[1]]);
        if (there.symmetry != 0) continue;  // the layout has another image instead
        worths[indexWithout(victim, there.pair, image, squares)] = worth;
    }
}

std::uint64_t ConversionWorths::indexWithout(std::size_t victim, unsigned pair,
                                             const Layout::Image& image,
                                             const Squares& squares) const {
    std::uint64_t index = pair;
    for (std::size_t man = 2; man < material.count; ++man) {
        if (man != victim) index = index << 6 | image[squares[man]];
    }
    return index;
}

/// The worth of a capture that leads to these squares.
Worth ConversionWorths::capture(const Squares& after, std::size_t victim) const {
    const auto [pair, symmetry] = layout.reduce(after[0], after[1]);
    if (pair == KingPairs::Missing) return NoWorth;
    return without[firstLike[victim]][indexWithout(victim, pair, layout.image(symmetry), after)];
}

void ConversionWorths::rate(const Squares& squares, unsigned mover, Bitboard legal,
                            Worth* worths) const {
    Bitboard others = 0;
    for (std::size_t man = 0; man < last; ++man) others |= bit[squares[man]];
    for (std::size_t captor = 0; captor < last; ++captor) {
        if (material.side[captor] == mover) rateCapturesBy(captor, squares, others, worths);
    }
    if (material.side[last] == mover) rateCapturesByLast(squares, others, worths);
    for (Bitboard illegal = ~legal; illegal != 0;) worths[takeNext<White>(illegal)] = NoWorth;
    ratePromotions(squares, mover, legal, worths);
}

void ConversionWorths::rateCapturesByLast(const Squares& squares, Bitboard others,
                                          Worth* worths) const {
    const unsigned mover = material.side[last];
    const Kind kind = material.man[last];
    for (std::size_t victim = 2; victim < last; ++victim) {
        if (material.side[victim] == mover) continue;
        const Square target = squares[victim];
        if (kind == Kind::Pawn && (bit[target] & OuterRanks) != 0) continue;
        // Attacks are mutual, except that pawns look the other way.
        Bitboard origins = attacksOf(kind, mover ^ 1U, target, others) & ~others;
        if (origins == 0) continue;
        Squares after = squares;
        after[last] = static_cast<std::uint8_t>(target);
        const Worth worth = capture(after, victim);
        while (origins != 0) raise(worths[takeNext<White>(origins)], worth);
    }
}

void ConversionWorths::rateCapturesBy(std::size_t captor, const Squares& squares, Bitboard others,
                                      Worth* worths) const {
    const unsigned mover = material.side[captor];
    const Kind kind = material.man[captor];
    Bitboard targets = attacksOf(kind, mover, squares[captor], others);
    if (kind == Kind::Pawn) targets &= ~OuterRanks;
    for (std::size_t victim = 2; victim < last; ++victim) {
        if (material.side[victim] != mover && (targets & bit[squares[victim]]) != 0) {
            rateCapture(captor, victim, squares, worths);
        }
    }
    if (material.side[last] == mover) return;
    targets &= ~others;
    while (targets != 0) {
        const Square target = takeNext<White>(targets);
        Squares after = squares;
        after[captor] = static_cast<std::uint8_t>(target);
        raise(worths[target], capture(after, last));
    }
}

/// The capture of one man by another, neither of them the last, for all squares of the last man.
void ConversionWorths::rateCapture(std::size_t captor, std::size_t victim, const Squares& squares,
                                   Worth* worths) const {
    Squares after = squares;
    after[captor] = squares[victim];
    after[last] = 0;
    const auto [pair, symmetry] = layout.reduce(after[0], after[1]);
    if (pair == KingPairs::Missing) return;
    const Layout::Image& image = layout.image(symmetry);
    const std::uint64_t first = indexWithout(victim, pair, image, after) & ~std::uint64_t{63};
    const Worth* const results = without[firstLike[victim]].data() + first;
    std::array<Worth, 64> before{};
    std::copy_n(worths, 64, before.begin());
    if (symmetry == 0) {
        for (std::size_t square = 0; square < 64; ++square) raise(worths[square], results[square]);
    } else {
        for (std::size_t square = 0; square < 64; ++square) {
            raise(worths[square], results[image[square]]);
        }
    }
    // There the last man is in the way.
    Bitboard path = between[squares[captor]][squares[victim]];
    while (path != 0) {
        const Square square = takeNext<White>(path);
        worths[square] = before[static_cast<std::size_t>(square)];
    }
}

void ConversionWorths::ratePromotions(const Squares& squares, unsigned mover, Bitboard legal,
                                      Worth* worths) const {
    for (std::size_t pawn = 2; pawn < material.count; ++pawn) {
        if (material.man[pawn] != Kind::Pawn || material.side[pawn] != mover) continue;
        const Bitboard seventh = rowMask[pawnHome(mover ^ 1U)];
        if (pawn != last && (seventh & bit[squares[pawn]]) == 0) continue;
        Bitboard rest = pawn == last ? legal & seventh : legal;
        Squares position = squares;
        while (rest != 0) {
            const Square square = takeNext<White>(rest);
            position[last] = static_cast<std::uint8_t>(square);
            ratePromotionsBy(pawn, position, worths[square]);
        }
    }
}

/// Moves that expose the king lead to positions without a value.
void ConversionWorths::ratePromotionsBy(std::size_t pawn, const Squares& squares,
                                        Worth& worth) const {
    const unsigned mover = material.side[pawn];
    const Square from = squares[pawn];
    const auto promote = [&](Square to, std::size_t captured) {
        Squares after = squares;
        after[pawn] = static_cast<std::uint8_t>(to);
        for (const Kind into : PromotedMen) {
            raise(worth, worthOfLeaving(files.outcome(after, {captured, pawn, into})));
        }
    };
    const Square ahead = from + pawnStep(mover);
    bool isBlocked = false;
    for (std::size_t man = 0; man < material.count; ++man) {
        isBlocked |= squares[man] == ahead;
        if (man >= 2 && material.side[man] != mover &&
            (pawnTargets(mover, from) & bit[squares[man]]) != 0) {
            promote(squares[man], man);
        }
    }
    if (!isBlocked) promote(ahead, 0);
}

Worth ConversionWorths::enPassant(const Squares& squares, std::size_t pawn) const {
    Worth worth = NoWorth;
    for (std::size_t captor = 2; captor < material.count; ++captor) {
        if (material.man[captor] != Kind::Pawn || material.side[captor] == material.side[pawn] ||
            (besides(bit[squares[pawn]]) & bit[squares[captor]]) == 0) {
            continue;
        }
        Squares after = squares;
        after[captor] = static_cast<std::uint8_t>(squares[pawn] - pawnStep(material.side[pawn]));
        raise(worth, capture(after, pawn));
    }
    return worth;
}

}  // namespace brivok::tables
