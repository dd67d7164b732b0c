#include "egtb/table_index.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "board/static_tables.h"
#include "egtb/descriptors.h"
#include "engine_fixture.h"

namespace brivok {
namespace {

constexpr std::string_view TypeLetters = "pnbrqk";
constexpr unsigned FlipFiles = 7;
constexpr unsigned FlipRanks = 56;

const TablebaseDescriptor& tableNamed(std::string_view name) {
    const auto found =
        std::find_if(tablebaseDescriptors.begin(), tablebaseDescriptors.end(),
                     [name](const auto& table) { return table.signature() == name; });
    EXPECT_NE(found, tablebaseDescriptors.end()) << name;
    return *found;
}

/// A table with one side to move, with its rules written in the simplest way.
class Table {
public:
    struct Man {
        char letter;
        bool isFirst;
        std::size_t slot;
        unsigned kind;  ///< the same for interchangeable men
    };

    Table(const TablebaseDescriptor& descriptor, unsigned sideToMove)
        : id(descriptor.id), side(sideToMove), size(descriptor.size[sideToMove != 0]) {
        const std::string_view name = descriptor.signature();
        PieceCounts filled{};
        bool isFirst = false;
        for (const char letter : name) {
            const std::size_t type = TypeLetters.find(letter);
            isFirst ^= letter == 'k';
            if (letter == 'k') {
                men.push_back({letter, isFirst, KingSlot, isFirst ? 0U : 1U});
                continue;
            }
            hasPawns |= letter == 'p';
            const std::size_t place = type + (isFirst ? 0U : 5U);
            const std::size_t man = filled[place]++;
            men.push_back(
                {letter, isFirst, type * SlotsPerType + man, static_cast<unsigned>(place) + 2});
        }
        std::stable_sort(men.begin(), men.end(),
                         [](const Man& a, const Man& b) { return a.kind < b.kind; });
        hasCaptures = filled[0] > 0 && filled[5] > 0;
        if (side != 0) std::swap(men[0], men[1]);
    }

    static std::uint32_t& square(TablePosition& at, const Man& man) {
        return (man.isFirst ? at.first : at.second)[man.slot];
    }
    static std::uint32_t square(const TablePosition& at, const Man& man) {
        return (man.isFirst ? at.first : at.second)[man.slot];
    }

    [[nodiscard]] bool isMovers(const Man& man) const { return man.isFirst == (side == 0); }
    [[nodiscard]] std::uint64_t indexOf(const TablePosition& at, int invert = 0) const {
        return tableIndex(id, side, at.first, at.second, at.ep, invert);
    }

    /// Men on distinct squares, no pawns on the first or last rank, kings apart, the side not to
    /// move not in check, and the squares of an en passant capture empty.
    [[nodiscard]] bool isLegal(const TablePosition& at) const {
        Bitboard occupied = 0;
        for (const Man& man : men) {
            const Bitboard here = bit[square(at, man)];
            if ((occupied & here) != 0) return false;
            if (man.letter == 'p' && (here & (rowMask[0] | rowMask[7])) != 0) return false;
            occupied |= here;
        }
        const auto king = static_cast<Square>(square(at, men[1]));
        for (const Man& man : men) {
            if (isMovers(man) &&
                attacks(man, static_cast<Square>(square(at, man)), king, occupied)) {
                return false;
            }
        }
        return at.ep == NoEnPassant || hasCapture(at, occupied);
    }

    /// The same number for all positions that are equal by symmetry.
    [[nodiscard]] std::uint64_t symmetryClass(const TablePosition& at) const {
        std::uint64_t lowest = ~std::uint64_t{0};
        for (const TablePosition& image : images(at)) lowest = std::min(lowest, keyOf(image));
        return lowest;
    }

    [[nodiscard]] std::vector<TablePosition> images(const TablePosition& at) const {
        if (hasPawns) return {at, turned(at, FlipFiles)};
        std::vector<TablePosition> all;
        for (const unsigned flip : {0U, FlipFiles, FlipRanks, FlipFiles | FlipRanks}) {
            all.push_back(turned(at, flip));
            all.push_back(reflected(all.back()));
        }
        return all;
    }

    [[nodiscard]] TablePosition turned(TablePosition at, unsigned flip) const {
        for (const Man& man : men) square(at, man) ^= flip;
        if (at.ep != NoEnPassant) at.ep ^= static_cast<int>(flip);
        return at;
    }

    [[nodiscard]] TablePosition reflected(TablePosition at) const {
        for (const Man& man : men) {
            const std::uint32_t from = square(at, man);
            square(at, man) = (from & 7) * 8 + from / 8;
        }
        return at;
    }

    /// All squares of a position, with men of one kind in any order.
    [[nodiscard]] std::uint64_t keyOf(const TablePosition& at) const {
        std::array<unsigned, 6> places{};
        for (std::size_t i = 0; i < men.size(); ++i) {
            places[i] = men[i].kind * 64 + square(at, men[i]);
        }
        std::sort(places.begin(), places.end());
        auto key = static_cast<std::uint64_t>(at.ep);
        for (const unsigned place : places) key = key << 6 | (place & 63);
        return key;
    }

    int id;
    unsigned side;
    std::uint64_t size;
    bool hasPawns = false;
    bool hasCaptures = false;  ///< both sides have pawns
    std::vector<Man> men;      ///< the mover's king, the other king, then the rest

private:
    [[nodiscard]] bool attacks(const Man& man, Square from, Square king, Bitboard occupied) const {
        const bool isClear = (between[from][king] & occupied) == 0;
        switch (man.letter) {
            case 'p':  // rank 1 is row 0 here, but row 7 on the board
                return ((man.isFirst ? blackPawnAttacks : whitePawnAttacks)[from] & bit[king]) != 0;
            case 'n': return (knightAttacks[from] & bit[king]) != 0;
            case 'b': return (bishopEmptyAttacks[from] & bit[king]) != 0 && isClear;
            case 'r': return (rookEmptyAttacks[from] & bit[king]) != 0 && isClear;
            case 'q': return (queenEmptyAttacks[from] & bit[king]) != 0 && isClear;
            default: return (kingAttacks[from] & bit[king]) != 0;
        }
    }

    [[nodiscard]] bool hasCapture(const TablePosition& at, Bitboard occupied) const {
        if (rowOf(at.ep) != (side == 0 ? 5 : 2)) return false;
        const int forward = side == 0 ? 8 : -8;
        const Square taken = at.ep - forward;
        if ((occupied & (bit[at.ep] | bit[at.ep + forward])) != 0) return false;
        bool canTake = false;
        bool isThere = false;
        for (const Man& man : men) {
            if (man.letter != 'p') continue;
            const auto pawn = static_cast<Square>(square(at, man));
            canTake |= isMovers(man) && rowOf(pawn) == rowOf(taken) && std::abs(pawn - taken) == 1;
            isThere |= !isMovers(man) && pawn == taken;
        }
        return canTake && isThere;
    }
};

template <class Check>
void forEachTable(Check check) {
    for (const TablebaseDescriptor& descriptor : tablebaseDescriptors) {
        for (unsigned side = 0; side < 2; ++side) {
            SCOPED_TRACE(std::string(descriptor.signature()) + " side " + std::to_string(side));
            check(Table(descriptor, side));
        }
    }
}

class TableIndex : public EngineTest {};

PieceList listOf(const std::string& text) {
    PieceList list{};
    std::array<std::size_t, TypeLetters.size()> filled{};
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const auto type = TypeLetters.find(static_cast<char>(word[0] - 'A' + 'a'));
        list[type * SlotsPerType + filled[type]++] =
            static_cast<std::uint32_t>(word[1] - 'a' + 8 * (word[2] - '1'));
    }
    return list;
}

TEST_F(TableIndex, GivesTheKnownIndices) {
    for (const auto& record : loadJson("indices.json")) {
        SCOPED_TRACE(record.dump());
        EXPECT_EQ(tableNamed(record[0].get<std::string>()).id, record[1]);
        EXPECT_EQ(tableIndex(record[1], record[2], listOf(record[3]), listOf(record[4]), record[5],
                             record[6]),
                  record[7].get<std::uint64_t>());
    }
}

TEST_F(TableIndex, CountsFollowFromTheRadices) {
    struct Count {
        const char* name;
        unsigned side;
        std::uint64_t count;
    };
    constexpr std::uint64_t CapturesAlone = 1806 * 14;
    for (const Count& known : {
             Count{"kpk", 0, 81664},
             Count{"kpk", 1, 84012},
             Count{"knk", 0, 26282},
             Count{"knk", 1, 462 * 62},
             Count{"kqk", 0, 25635},
             Count{"kqkr", 0, 25635 * 61},
             Count{"kpkp", 0, 81664 * 47 + CapturesAlone},
             Count{"kpkp", 1, 81664 * 47 + CapturesAlone},
             Count{"kqqkr", 0, 699072 * 60},
             Count{"kbnkb", 1, 27243 * 61 * 60},
             Count{"knnknn", 0, 735304ULL * 1770},
             Count{"kppkp", 1, 81664ULL * 1081 + CapturesAlone * 44},
             Count{"kqqkq", 1, 25635 * 1830},
             Count{"kbnnkn", 1, 26282ULL * 61 * 1770},
             Count{"kbbnkn", 1, 26282ULL * 61 * 1770},
             Count{"kqqrkp", 1, 81664ULL * 1830 * 59},
             Count{"krnknp", 0, 6014436ULL * 48 * 59},
             Count{"kpppkp", 1, 81664ULL * 16215 + CapturesAlone * 946},
             Count{"kbbbkp", 1, 81664ULL * 35990},
         }) {
        EXPECT_EQ(tableIndexCount(tableNamed(known.name).id, known.side), known.count)
            << known.name << " side " << known.side;
    }
}

/// A file ends with its last legal position.
TEST_F(TableIndex, SizesEndWithTheLastLegalPosition) {
    forEachTable([](const Table& table) {
        if (table.id == tableNamed("kpppkp").id && table.side == 1) {
            EXPECT_EQ(table.size, 1349124426U);
            return;
        }
        std::uint64_t size = tableIndexCount(table.id, table.side);
        for (TablePosition at; size > 0; --size) {
            if (tablePosition(table.id, table.side, size - 1, at) && table.isLegal(at)) break;
        }
        EXPECT_EQ(table.size, size);
    });
}

/// Indexes one position of each symmetry class of a table.
class Walk {
public:
    explicit Walk(const Table& walked) : table(walked), seen(table.size) {
        unsigned pair = 0;
        for (std::uint32_t mover = 0; mover < 64; ++mover) {
            const bool inTriangle = mover < 32 && mover / 8 <= mover % 8;
            if (mover % 8 > 3 || !(table.hasPawns || inTriangle)) continue;
            for (std::uint32_t other = 0; other < 64; ++other) {
                if (SlowBuild && ++pair % 61 != 0) continue;
                table.square(at, table.men[0]) = mover;
                table.square(at, table.men[1]) = other;
                onDiagonal = !table.hasPawns && mover / 8 == mover % 8;
                place(2);
            }
        }
    }

    std::uint64_t positions = 0;
    std::uint64_t withoutOwnIndex = 0;

private:
    void place(std::size_t number) {
        if (number == table.men.size()) return visitWithCaptures();
        const Table::Man& man = table.men[number];
        const Table::Man& before = table.men[number - 1];
        std::uint32_t& square = table.square(at, man);
        square = man.letter == 'p' ? 8 : 0;
        if (man.kind == before.kind) square = table.square(at, before) + 1;
        for (; square < (man.letter == 'p' ? 56U : 64U); ++square) place(number + 1);
    }

    void visitWithCaptures() {
        visit();
        if (!table.hasCaptures) return;
        for (int file = 0; file < 8; ++file) {
            at.ep = (table.side == 0 ? 40 : 16) + file;
            visit();
        }
        at.ep = NoEnPassant;
    }

    void visit() {
        if (!table.isLegal(at)) return;
        if (onDiagonal && table.keyOf(at) > table.keyOf(table.reflected(at))) return;
        ++positions;
        const std::uint64_t index = table.indexOf(at);
        if (index < table.size && !seen[index]) {
            seen[index] = true;
        } else {
            ++withoutOwnIndex;
        }
    }

    const Table& table;
    TablePosition at;
    std::vector<bool> seen;
    bool onDiagonal = false;
};

TEST_F(TableIndex, EveryPositionOfThreeAndFourMenHasItsOwn) {
    forEachTable([](const Table& table) {
        if (table.men.size() < 3 || table.men.size() > 4) return;
        const Walk walk(table);
        EXPECT_GT(walk.positions, 0U);
        EXPECT_EQ(walk.withoutOwnIndex, 0U) << "of " << walk.positions;
    });
}

/// Such a position without pawns has an index of its own, and so has its reflection.
bool kingsShareDiagonal(const Table& table, const TablePosition& at) {
    const auto on = [&](std::size_t king, unsigned flip) {
        const std::uint32_t square = table.square(at, table.men[king]) ^ flip;
        return square / 8 == square % 8;
    };
    return (on(0, 0) && on(1, 0)) || (on(0, FlipFiles) && on(1, FlipFiles));
}

/// A position can be restored from its index, and its symmetric images have the same index.
void expectRoundTrip(const Table& table, const TablePosition& at) {
    const std::uint64_t index = table.indexOf(at);
    ASSERT_LT(index, table.isLegal(at) ? table.size : tableIndexCount(table.id, table.side));
    EXPECT_EQ(table.indexOf(table.turned(at, FlipRanks), 1), index);
    for (const TablePosition& image : table.images(at)) {
        const std::uint64_t imageIndex = table.indexOf(image);
        EXPECT_TRUE(imageIndex == index || (!table.hasPawns && kingsShareDiagonal(table, at)));
        TablePosition back;
        ASSERT_TRUE(tablePosition(table.id, table.side, imageIndex, back));
        EXPECT_EQ(table.symmetryClass(back), table.symmetryClass(at));
    }
}

TEST_F(TableIndex, RandomPositionsReturnFromTheirIndices) {
    std::mt19937_64 random(5);
    constexpr int Samples = SlowBuild ? 20 : 300;
    forEachTable([&](const Table& table) {
        const std::uint64_t count = tableIndexCount(table.id, table.side);
        for (int i = 0; i < Samples; ++i) {
            // Captures are few and come last.
            const std::uint64_t section = table.hasCaptures && i % 2 == 0 ? count / 100 : count;
            const std::uint64_t sample = count - 1 - random() % section;
            TablePosition at;
            if (tablePosition(table.id, table.side, sample, at)) {
                EXPECT_EQ(table.indexOf(at), sample);
                expectRoundTrip(table, at);
            }
            TablePosition any;
            for (const Table::Man& man : table.men) table.square(any, man) = random() % 64;
            if (i % 2 == 0) any.ep = static_cast<int>(random() % 64);
            const std::uint64_t index = table.indexOf(any);
            if (table.isLegal(any)) {
                EXPECT_NE(index, NoIndex);
                expectRoundTrip(table, any);
            }
        }
    });
}

TEST_F(TableIndex, MenThatMayNotStandThereHaveNone) {
    struct Illegal {
        const char* name;
        unsigned side;
        const char* first;
        const char* second;
        int ep;
    };
    for (const Illegal& position : {
             Illegal{"kqk", 0, "Ka1 Qd5", "Kb2", NoEnPassant},
             Illegal{"kqk", 1, "Ka1 Qd5", "Ka1", NoEnPassant},
             Illegal{"kqk", 0, "Ka1 Qd5", "Ke6", NoEnPassant},
             Illegal{"kpk", 0, "Ka1 Pa7", "Kb8", NoEnPassant},
             Illegal{"kpk", 0, "Ka1 Pa8", "Kc6", NoEnPassant},
             Illegal{"kpk", 1, "Ka1 Ph1", "Kc6", NoEnPassant},
             Illegal{"krkp", 0, "Ka1 Rd4", "Kc6 Ph1", NoEnPassant},
             Illegal{"kpkp", 0, "Ka1 Pe5", "Kc8 Pf5", 43},
             Illegal{"kpkp", 0, "Ka1 Pe5", "Kc8 Ph5", 47},
             Illegal{"kpkp", 0, "Ka1 Ph5", "Kc8 Pa5", 40},
             Illegal{"kpkp", 0, "Ka1 Ph4", "Kc8 Pa5", 40},
             Illegal{"kpkp", 1, "Ka1 Pe4", "Kc8 Pf4", 44},
             Illegal{"kpkp", 1, "Ka1 Pa3", "Kc8 Pb3", 8},
         }) {
        EXPECT_EQ(tableIndex(tableNamed(position.name).id, position.side, listOf(position.first),
                             listOf(position.second), position.ep, 0),
                  NoIndex)
            << position.name << ' ' << position.first << ' ' << position.second;
    }
    EXPECT_NE(tableIndex(tableNamed("kpk").id, 1, listOf("Ka1 Pa7"), listOf("Kb8"), NoEnPassant, 0),
              NoIndex);
    EXPECT_NE(tableIndex(tableNamed("kpkp").id, 1, listOf("Ka1 Pe4"), listOf("Kc8 Pf4"), 20, 0),
              NoIndex);
}

}  // namespace
}  // namespace brivok
