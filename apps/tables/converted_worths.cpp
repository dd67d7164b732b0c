#include "converted_worths.h"

#include <algorithm>
#include <utility>

#include "egtb/piece_list.h"
#include "geometry.h"
#include "parallel.h"
#include "table_reader.h"

namespace brivok::tables {
namespace {

/// Whether the men that are not Gone stand on different squares, and pawns on their ranks.
bool isPossible(const Material& material, const Squares& squares) {
    Bitboard occupied = 0;
    for (std::size_t man = 0; man < material.count; ++man) {
        if (material.man[man] == Gone) continue;
        const Bitboard forbidden =
            material.man[man] == Kind::Pawn ? occupied | OuterRanks : occupied;
        if ((forbidden & bit[squares[man]]) != 0) return false;
        occupied |= bit[squares[man]];
    }
    return true;
}

}  // namespace

ConvertedWorths::ConvertedWorths(const Material& itsMaterial, const Layout& itsLayout,
                                 TableStore& store, unsigned threads)
    : material(itsMaterial), layout(itsLayout) {
    for (std::size_t man = 0; man < material.count; ++man) {
        firstLike[man] = man > 2 && material.likeTheOneBefore(man) ? firstLike[man - 1] : man;
    }
    for (const Conversion& conversion : conversionsOf(material)) {
        const Change change{conversion.captured, conversion.promoted};
        const bool isFirst = firstLike[change.captured] == change.captured &&
                             firstLike[change.promoted] == change.promoted;
        const bool isKnown = tables[change.captured][change.promoted].worths != nullptr;
        if (isFirst && !isKnown) read(change, store, threads);
    }
}

void ConvertedWorths::read(const Change& change, TableStore& store, unsigned threads) {
    const auto [captured, promoted] = change;
    Table& table = tables[captured][promoted];
    for (std::size_t man = material.count; man-- > 2;) {
        if (man == captured) continue;
        table.digits.push_back({man, table.bits, man == promoted});
        table.bits += man == promoted ? 3 : 6;
    }
    std::reverse(table.digits.begin(), table.digits.end());
    const std::size_t size = std::size_t{1} << table.bits;
    table.worths = std::make_unique<Worth[]>(layout.pairs() * size);

    const unsigned mover =
        captured != 0 ? material.side[captured] ^ 1U : unsigned{material.side[promoted]};
    std::vector<TableReader> readers;
    for (const Kind into : PromotedMen) {
        readers.emplace_back(convert(material, {captured, promoted, into}), mover ^ 1U, store);
        if (promoted == 0) break;
    }
    const Material after = convert(material, {captured, promoted, PromotedMen[0]});
    const unsigned promotionSquares = mover == 0 ? 56 : 0;
    const auto find = [&](unsigned pair, std::size_t number, Worth* worths) {
        Squares squares{};
        squares[0] = layout.kingsOf(pair)[0];
        squares[1] = layout.kingsOf(pair)[1];
        std::size_t lower = number;  // with like men exchanged
        for (std::size_t i = 0; i < table.digits.size(); ++i) {
            const auto& [man, place, isFile] = table.digits[i];
            const std::size_t square =
                isFile ? (number >> place & 7) + promotionSquares : number >> place & 63;
            squares[man] = static_cast<std::uint8_t>(square);
            if (i == 0 || isFile || table.digits[i - 1].isFile) continue;
            const std::size_t before = table.digits[i - 1].man;
            if (firstLike[before] != firstLike[man] || squares[before] <= square) continue;
            const std::size_t difference = squares[before] ^ square;
            lower = number ^ difference << place ^ difference << table.digits[i - 1].place;
        }
        if (lower != number) return worths[lower];
        Worth best = NoWorth;
        if (!isPossible(after, squares)) return best;
        for (const TableReader& reader : readers) {
            best = std::max(best, worthOfLeaving(reader.outcome(squares, NoEnPassant)));
        }
        return best;
    };
    inParallel(
        threads, layout.pairs(),
        [&](std::uint64_t begin, std::uint64_t end) {
            for (std::uint64_t pair = begin; pair < end; ++pair) {
                Worth* const worths = table.worths.get() + pair * size;
                for (std::size_t number = 0; number < size; ++number) {
                    worths[number] = find(static_cast<unsigned>(pair), number, worths);
                }
            }
        },
        1);
}

std::size_t ConvertedWorths::Table::number(unsigned pair, const Squares& squares) const {
    std::size_t number = std::size_t{pair} << bits;
    for (const auto& [man, place, isFile] : digits) {
        number |= std::size_t{isFile ? squares[man] & 7U : squares[man]} << place;
    }
    return number;
}

/// The table of a change. Where it holds the results for the first of like men, exchanges them.
const ConvertedWorths::Table& ConvertedWorths::tableOf(const Change& change,
                                                       Squares& squares) const {
    const auto [captured, promoted] = change;
    squares[captured] = squares[firstLike[captured]];
    std::swap(squares[promoted], squares[firstLike[promoted]]);
    return tables[firstLike[captured]][firstLike[promoted]];
}

Worth ConvertedWorths::worth(const Change& change, Squares squares) const {
    const auto [pair, symmetry] = layout.reduce(squares[0], squares[1]);
    if (pair >= layout.pairs()) return NoWorth;  // the kings are adjacent
    const Layout::Image& image = layout.image(symmetry);
    for (std::size_t man = 0; man < material.count; ++man) squares[man] = image[squares[man]];
    const Table& table = tableOf(change, squares);
    return table.worths[table.number(pair, squares)];
}

const Worth* ConvertedWorths::row(const Change& change, unsigned pair, Squares squares) const {
    squares[material.count - 1] = 0;
    const Table& table = tableOf(change, squares);
    return table.worths.get() + table.number(pair, squares);
}

}  // namespace brivok::tables
