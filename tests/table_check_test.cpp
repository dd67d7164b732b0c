#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/tables/file_walk.h"
#include "../apps/tables/full_check.h"
#include "../apps/tables/layout.h"
#include "../apps/tables/row_bytes.h"
#include "../apps/tables/table_store.h"
#include "egtb/table_index.h"
#include "engine_fixture.h"

namespace brivok::tables {
namespace {

class TableCheckTest : public EngineTest {
protected:
    RowBytes randomRow() {
        RowBytes row;
        for (std::uint8_t& byte : row.at) byte = static_cast<std::uint8_t>(random());
        return row;
    }

    std::mt19937_64 random;
};

TEST_F(TableCheckTest, RowsMoveLikeSingleMen) {
    for (int i = 0; i < 200; ++i) {
        const Bitboard occupied = random() & random() & random();
        RowBytes row = randomRow();
        keep(row, maskOf(~occupied));
        for (const Kind man : {Kind::Pawn, Kind::Knight, Kind::Bishop, Kind::Rook, Kind::Queen}) {
            const auto side = static_cast<unsigned>(i % 2);
            RowBytes best{};
            raiseByMovesWithin(best, row.at.data(), man, side, occupied);
            for (Square from = 0; from < 64; ++from) {
                Bitboard to = attacksOf(man, side, from, occupied);
                const Square ahead = from + pawnStep(side);
                if (man == Kind::Pawn) to = ahead >= 0 && ahead < 64 ? bit[ahead] : 0;
                std::uint8_t expected = 0;
                while (to != 0) {
                    const auto target = static_cast<std::size_t>(takeNext<White>(to));
                    expected = std::max(expected, row.at[target]);
                }
                ASSERT_EQ(best.at[static_cast<std::size_t>(from)], expected) << from;
            }
        }
        const Layout layout(5, false);
        for (unsigned symmetry = 0; symmetry < 8; ++symmetry) {
            const RowBytes moved = permuted(row.at.data(), symmetry);
            for (std::size_t square = 0; square < 64; ++square) {
                ASSERT_EQ(moved.at[square], row.at[layout.image(symmetry)[square]]);
            }
        }
    }
}

TEST_F(TableCheckTest, TheBestMoveTellsWhatThePreviousOneLeft) {
    EXPECT_EQ(leavingIfBestIs(NoWorth, true), worthOfLeaving(lossIn(0)));
    EXPECT_EQ(leavingIfBestIs(NoWorth, false), worthOfLeaving(Draw));
    EXPECT_EQ(leavingIfBestIs(DrawnWorth, true), worthOfLeaving(Draw));
    for (unsigned moves = 1; moves <= 127; ++moves) {
        EXPECT_EQ(leavingIfBestIs(winWorth(moves), false), worthOfLeaving(winIn(moves)));
        // A loss in 127 has no byte.
        EXPECT_EQ(leavingIfBestIs(lossWorth(moves), false),
                  moves < 127 ? worthOfLeaving(lossIn(moves)) : NoWorth);
    }
}

/// What an entry is; a stray one has no position.
enum class EntryKind { Win, Draw, Loss, Illegal, Stray };

/// Wrong outcomes in place of those of each kind.
std::vector<Outcome> wrongOutcomes(EntryKind kind, Outcome right) {
    const unsigned moves = movesToMate(right);
    switch (kind) {
        case EntryKind::Win: return {winIn(moves == 1 ? 2 : moves - 1), winIn(moves + 1), Draw};
        case EntryKind::Draw: return {winIn(7), lossIn(0), NoValue};
        case EntryKind::Loss: return {lossIn(moves + 1), Draw, NoValue};
        default: return {Draw, lossIn(0)};
    }
}

/// Changes single entries of a table, and expects the check to name each of them.
class WrongEntries {
public:
    WrongEntries(const char* signature, TableStore& itsStore, std::mt19937_64& itsRandom)
        : material(materialOf(signature)),
          id(tableOf(material).id),
          store(itsStore),
          random(itsRandom) {
        for (unsigned side = 0; side < 2; ++side) right[side] = store.entries(id, side);
    }

    void areFound() {
        for (unsigned side = 0; side < filesOf(id); ++side) {
            const std::uint64_t plain =
                std::min<std::uint64_t>(FileWalk(id, material, side).size(), right[side].size());
            for (int kind = 0; kind < 5; ++kind) {
                isFound(side, static_cast<EntryKind>(kind), 0, plain);
                isFound(side, static_cast<EntryKind>(kind), plain, right[side].size());
            }
        }
        store.put(id, right);
    }

    int changes = 0;

private:
    void isFound(unsigned side, EntryKind kind, std::uint64_t begin, std::uint64_t end) {
        for (int attempt = 0; begin < end && attempt < 10'000; ++attempt) {
            const std::uint64_t index = begin + random() % (end - begin);
            if (kindOf(side, index) != kind) continue;
            const std::uint8_t entry = right[side][index];
            const std::vector<Outcome> wrong = wrongOutcomes(kind, outcomeOf(entry));
            TableBytes bytes = right;
            bytes[side][index] = byteOf(wrong[random() % wrong.size()]);
            store.put(id, std::move(bytes));
            const auto fault = FullCheck(id, store, 2).firstFault(side);
            ASSERT_TRUE(fault.has_value()) << side << ' ' << index;
            EXPECT_EQ(fault->index, index) << side;
            EXPECT_EQ(byteOf(fault->expected), entry) << side << ' ' << index;
            ++changes;
            return;
        }
    }

    [[nodiscard]] EntryKind kindOf(unsigned side, std::uint64_t index) const {
        const Outcome outcome = outcomeOf(right[side][index]);
        if (outcome == Draw) return EntryKind::Draw;
        if (isWin(outcome)) return EntryKind::Win;
        if (isLoss(outcome)) return EntryKind::Loss;
        TablePosition position;
        return tablePosition(id, side, index, position) ? EntryKind::Illegal : EntryKind::Stray;
    }

    Material material;
    int id;
    TableStore& store;
    std::mt19937_64& random;
    TableBytes right;
};

/// BRIVOK_TABLES names a folder with all tables of up to four men.
TEST_F(TableCheckTest, RealTables) {
    const char* const folder = std::getenv("BRIVOK_TABLES");
    if (folder == nullptr) GTEST_SKIP() << "BRIVOK_TABLES names no folder";
    TableStore store(folder);
    int changes = 0;
    for (const char* signature : {"kpkp", "kqkp", "krkn", "knkn", "kppk"}) {
        SCOPED_TRACE(signature);
        WrongEntries wrong(signature, store, random);
        wrong.areFound();
        changes += wrong.changes;
    }
    EXPECT_GE(changes, 30);
}

}  // namespace
}  // namespace brivok::tables
