#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/common/scratch_memory.h"
#include "../apps/tables/colour_exchange.h"
#include "../apps/tables/file_walk.h"
#include "../apps/tables/layout.h"
#include "../apps/tables/moves.h"
#include "../apps/tables/new_table.h"
#include "../apps/tables/outcome.h"
#include "../apps/tables/predecessors.h"
#include "../apps/tables/row.h"
#include "../apps/tables/table_entry.h"
#include "../apps/tables/table_maker.h"
#include "../apps/tables/table_reader.h"
#include "../apps/tables/table_store.h"
#include "../apps/tables/targets.h"
#include "../apps/tables/verify.h"
#include "../apps/tables/worth_places.h"
#include "egtb/table_index.h"
#include "engine_fixture.h"
#include "movegen/legal_moves.h"
#include "table_folder.h"

namespace brivok::tables {
namespace {

class TableGeneratorTest : public EngineTest {
protected:
    /// Calls check(material, index, position) for random legal entries of a table's files, many of
    /// them with an en passant square if there are any.
    template <typename Check>
    void forRandomEntries(const char* signature, Check check) {
        const Material material = materialOf(signature);
        const int id = tableOf(material).id;
        for (unsigned side = 0; side < 2; ++side) {
            const std::uint64_t size = descriptorOf(id).size[side];
            const std::uint64_t last = material.hasEnPassant() ? size / 60 : size;
            for (int i = 0; i < (SlowBuild ? 500 : 5000); ++i) {
                const std::uint64_t index =
                    i % 2 == 0 ? random() % size : size - 1 - random() % last;
                Position position;
                if (legalPosition(id, material, side, index, position)) {
                    check(material, index, position);
                }
            }
        }
    }

    std::mt19937_64 random;
};

bool isOnDiagonal(Square square) { return mirrored(square) == square; }

/// Tables of six men are too large for some of the tests.
constexpr const char* Signatures[] = {"kqk",   "krrk",  "knnk",  "kpkp",  "krkp",
                                      "kqkr",  "kppk",  "kppkp", "kbpkp", "kqpkp",
                                      "kpppk", "krbkq", "kqqkn", "kbbbk"};

TEST_F(TableGeneratorTest, OutcomesAndBytesTellTheSame) {
    EXPECT_EQ(byteOf(Draw), 0);
    EXPECT_EQ(byteOf(NoValue), 127);
    EXPECT_EQ(byteOf(winIn(1)), 126);
    EXPECT_EQ(byteOf(winIn(126)), 1);
    EXPECT_EQ(byteOf(winIn(127)), 0x80);
    EXPECT_EQ(byteOf(lossIn(0)), 0x82);
    EXPECT_EQ(byteOf(lossIn(125)), 0xFF);
    EXPECT_EQ(byteOf(lossIn(126)), 0x81);
    for (unsigned byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(byteOf(outcomeOf(static_cast<std::uint8_t>(byte))), byte);
    }
    EXPECT_EQ(wideOf(winIn(1)), 0x7FFE);
    EXPECT_EQ(wideOf(lossIn(0)), 0x8002);
    EXPECT_EQ(outcomeOfWide(0x8001), NoValue);
    for (Outcome outcome = 0; outcome < OutcomeCount; ++outcome) {
        EXPECT_EQ(outcomeOfWide(wideOf(outcome)), outcome);
    }
}

TEST_F(TableGeneratorTest, LayoutAndFilesNumberTheSamePositions) {
    for (const char* signature : Signatures) {
        const Material table = materialOf(signature);
        const Layout layout(table.count, table.hasPawns());
        const EntryFinder finder(table);
        forRandomEntries(signature, [&](const Material& material, std::uint64_t index,
                                        const Position& position) {
            SCOPED_TRACE(fenOf(material, position));
            if (position.ep != NoEnPassant) return;
            const std::uint64_t number = layout.index(position.squares);
            ASSERT_LT(number, layout.size());
            Position same = position;
            same.squares = layout.squares(number);
            EXPECT_TRUE(isLegal(material, same));
            EXPECT_EQ(layout.index(same.squares), number);
            // With both kings on the diagonal, a reflection may represent the position.
            if (!material.hasPawns() && isOnDiagonal(same.squares[0]) &&
                isOnDiagonal(same.squares[1])) {
                return;
            }
            const auto entry = finder.find(same.squares, same.mover, same.ep);
            EXPECT_EQ(entry.side, position.mover);
            EXPECT_EQ(entry.index, index);
        });
    }
}

TEST_F(TableGeneratorTest, AWalkVisitsTheEntriesOfAFile) {
    for (const char* signature : Signatures) {
        const Material material = materialOf(signature);
        const int id = tableOf(material).id;
        for (unsigned side = 0; side < filesOf(id); ++side) {
            const FileWalk walk(id, material, side);
            std::uint64_t visits = 0;
            walk.visitPair(static_cast<unsigned>(random() % walk.pairs()), [&](std::uint64_t index,
                                                                               Squares squares) {
                if (++visits % 97 != 0) return;
                Position position;
                if (!legalPosition(id, material, side, index, position)) return;
                EXPECT_EQ(fenOf(material, {squares, position.mover}), fenOf(material, position));
            });
            EXPECT_GT(visits, 0U);
        }
    }
}

TEST_F(TableGeneratorTest, MovesAreTheEnginesMoves) {
    for (const char* signature : Signatures) {
        forRandomEntries(
            signature, [&](const Material& material, std::uint64_t, const Position& position) {
                const std::string fen = fenOf(material, position);
                SCOPED_TRACE(fen);
                setPosition(fen);
                MoveList list;
                generateMoves(board, list);
                std::multiset<Square> expected;
                for (int i = 0, count = board.moveCount; i < count; ++i) {
                    if (leavesKingSafe(board, list[i])) expected.insert(moveTo(list[i]) ^ 56);
                }
                const LegalMoves moves(material, position);
                EXPECT_EQ(moves.inCheck(), board.inCheck());
                std::multiset<Square> found;
                for (std::size_t man = 0; man < material.count; ++man) {
                    for (Bitboard quiet = moves.quiet(man); quiet != 0;) {
                        const Square to = takeNext<White>(quiet);
                        found.insert(to);
                        const Position after = positionAfter(material, position, man, to);
                        EXPECT_TRUE(isLegal(material, after));
                    }
                }
                moves.forEachConversion([&](const Squares& squares, const Conversion&) {
                    for (std::size_t man = 0; man < material.count; ++man) {
                        if (squares[man] != position.squares[man]) found.insert(squares[man]);
                    }
                });
                EXPECT_EQ(found, expected);
            });
    }
}

TEST_F(TableGeneratorTest, TargetsComeAfterWhatTheyDependOn) {
    const auto names = [](const std::vector<std::string>& targets) {
        std::string text;
        for (const int id : tablesToMake(targets)) {
            text += std::string(descriptorOf(id).signature()) + " ";
        }
        return text;
    };
    EXPECT_EQ(names({"kbnk", "krk"}), "knk kbk kbnk krk ");
    EXPECT_EQ(names({"kpk"}), "knk kbk krk kqk kpk ");
    EXPECT_EQ(tablesToMake({"3men"}).size(), 5U);
    EXPECT_EQ(tablesToMake({"all4"}).size(), 35U);
    EXPECT_EQ(tablesNamed({"5men", "5men"}).size(), 110U);
    EXPECT_EQ(tablesToMake({"5men"}).size(), 145U);
    for (const char* unknown : {"kk", "krkq", "6men", "kqpkqp", ""}) {
        EXPECT_THROW((void)tablesToMake({unknown}), AppError) << unknown;
    }
}

/// Whole rows against single moves, for tables whose men stand in each place of the layout.
TEST_F(TableGeneratorTest, PredecessorsAreThePositionsWithAMoveIntoTheSet) {
    for (const char* signature : Signatures) {
        const Material material = materialOf(signature);
        const Layout layout(material.count, material.hasPawns());
        const Predecessors predecessors(material, layout);
        const auto pair = static_cast<unsigned>(random() % layout.pairs());
        PositionSet set(layout);
        std::vector<Bitboard> from(layout.rowsPerPair());
        for (unsigned mover = 0; mover < 2; ++mover) {
            // Every second legal position, of all pairs that the king can step to.
            std::fill(set.isUsed.begin(), set.isUsed.end(), std::uint8_t{0});
            for (unsigned other = 0; other < layout.pairs(); ++other) {
                std::vector<std::uint8_t> only(layout.pairs());
                only[other] = 1;
                if (!predecessors.canReach(pair, mover, only)) continue;
                set.isUsed[other] = 1;
                for (std::size_t row = 0; row < layout.rowsPerPair(); ++row) {
                    set.block(other)[row] =
                        Row(material, layout, other, row).legal(mover ^ 1U) & random();
                }
            }
            predecessors.find(pair, mover, set, from.data());
            for (int i = 0; i < 3000; ++i) {
                const std::size_t row = random() % layout.rowsPerPair();
                const Square square = static_cast<Square>(random() % 64);
                if ((Row(material, layout, pair, row).legal(mover) & bit[square]) == 0) continue;
                const std::uint64_t first = (std::uint64_t{pair} * layout.rowsPerPair() + row) << 6;
                const Position position{layout.squares(first + static_cast<std::uint64_t>(square)),
                                        static_cast<std::uint8_t>(mover)};
                const LegalMoves moves(material, position);
                bool isPredecessor = false;
                for (std::size_t man = 0; man < material.count; ++man) {
                    for (Bitboard quiet = moves.quiet(man); quiet != 0;) {
                        const Position after =
                            positionAfter(material, position, man, takeNext<White>(quiet));
                        const std::uint64_t number = layout.index(after.squares);
                        isPredecessor |= after.ep == NoEnPassant &&
                                         (set.rows[number >> 6] >> (number & 63) & 1) != 0;
                    }
                }
                EXPECT_EQ((from[row] & bit[square]) != 0, isPredecessor)
                    << fenOf(material, position);
            }
        }
    }
}

/// Six men as well: what else they need is what five men need.
TEST_F(TableGeneratorTest, LikeMenShareThePlacesOfABlock) {
    for (const char* signature : {"krrk", "krbk", "kqqqk", "kqqkn", "kqqkqq", "kqqqkn"}) {
        const Material material = materialOf(signature);
        const Layout layout(material.count, false);
        const WorthPlaces places(material, layout);
        std::vector<std::uint8_t> uses(places.perPair());
        for (std::size_t position = 0; position < layout.rowsPerPair() << 6; ++position) {
            const std::size_t row = position >> 6;
            if (!places.isSorted(row) || (places.keeps(row) & bit[position & 63]) == 0) continue;
            ++uses.at(places.of(position));
            if (random() % 100 != 0) continue;
            places.forEachTwin(position, [&](std::size_t twin) {
                EXPECT_EQ(places.of(twin), places.of(position)) << signature;
            });
        }
        EXPECT_EQ(std::count(uses.begin(), uses.end(), 1), places.perPair()) << signature;
    }
}

/// Here the mates of the tables below are made to take so long that those of `kpk` would be longer.
TEST_F(TableGeneratorTest, RefusesWinsThatNoEntryTells) {
    for (const unsigned moves : {100U, LongestByteLoss}) {
        TableStore store("");
        for (const int id : tablesToMake({"3men"})) {
            if (descriptorOf(id).signature() == "kpk") {
                if (moves == LongestByteLoss) {
                    EXPECT_THROW((void)makeTable(id, store, {}), AppError);
                } else {
                    EXPECT_NO_THROW((void)makeTable(id, store, {}));
                }
                continue;
            }
            TableBytes bytes = makeTable(id, store, {});
            for (std::uint8_t& entry : bytes[1]) {
                if (isLoss(outcomeOf(entry))) entry = byteOf(lossIn(moves));
            }
            store.put(id, std::move(bytes));
        }
    }
}

TEST_F(TableGeneratorTest, ExchangedColoursExchangeTheMen) {
    for (const char* signature : {"kqkq", "krbkrb"}) {
        const Material material = materialOf(signature);
        const Layout layout(material.count, false);
        const ColourExchange colours(material, layout);
        std::vector<Bitboard> before(layout.rowsPerPair());
        std::vector<Bitboard> after(layout.rowsPerPair());
        for (Bitboard& row : before) row = random();
        for (int i = 0; i < 20; ++i) {
            const auto pair = static_cast<unsigned>(random() % layout.pairs());
            colours.exchange(pair, before.data(), after.data());
            for (int j = 0; j < 2000; ++j) {
                const std::size_t place = random() % (layout.rowsPerPair() << 6);
                Squares squares =
                    layout.squares(std::uint64_t{pair} * (layout.rowsPerPair() << 6) + place);
                std::swap(squares[0], squares[1]);
                const std::size_t half = (material.count - 2) / 2;
                std::swap_ranges(squares.begin() + 2, squares.begin() + 2 + half,
                                 squares.begin() + 2 + half);
                const std::uint64_t number = layout.index(squares);
                ASSERT_EQ(layout.pairOf(number), colours.of(pair).pair);
                const std::size_t there = layout.placeInBlock(number);
                EXPECT_EQ(after[place >> 6] >> (place & 63) & 1,
                          before[there >> 6] >> (there & 63) & 1);
            }
        }
    }
}

TEST_F(TableGeneratorTest, EntriesOfTwoBytesTellTheSame) {
    TableStore store("");
    for (const char* signature : {"kqk", "krk", "kpk"}) {
        for (const int id : tablesToMake({signature})) {
            store.put(id, makeTable(id, store, {}));
            const TableBytes wide = makeWideTable(id, store, {});
            for (unsigned side = 0; side < filesOf(id); ++side) {
                const std::vector<std::uint8_t>& narrow = store.entries(id, side);
                ASSERT_EQ(wide[side].size(), 2 * narrow.size());
                for (std::uint64_t i = 0; i < narrow.size(); ++i) {
                    ASSERT_EQ(outcomeAt(wide[side], true, i), outcomeAt(narrow, false, i));
                }
            }
        }
    }
}

/// A table's entries under the name of one with two bytes an entry, for the engine to read.
TEST_F(TableFolderTest, TheEngineReadsEntriesOfTwoBytes) {
    TableStore store("");
    TableBytes wide;
    for (const int id : tablesToMake({"krk"})) {
        store.put(id, makeTable(id, store, {}));
        wide = makeWideTable(id, store, {});
    }
    const std::vector<std::uint8_t>& krk = wide[1];
    PartedFile file({folder / "krnknn.nbw"}, ~std::uint64_t{0});
    file.write(krk);
    file.finish();
    open();
    const int id = tableOf(materialOf("krnknn")).id;
    for (std::uint64_t i = 0; i < krk.size() / 2; ++i) {
        const Outcome outcome = outcomeAt(krk, true, i);
        const int moves = static_cast<int>(movesToMate(outcome));
        const int value = outcome == Draw || outcome == NoValue
                              ? (outcome == Draw ? 0 : 32767)
                              : (isWin(outcome) ? 32767 - moves : moves - 32766);
        ASSERT_EQ(ProbeTableValue(id, 0, i), value) << i;
    }
}

TEST_F(TableFolderTest, PartsFollowOneAnother) {
    std::vector<std::uint8_t> bytes(1000);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    PartedFile file({folder / "a", folder / "b", folder / "c"}, 400);
    file.write(ByteSpan(bytes).first(300));
    file.write(ByteSpan(bytes).subspan(300));
    EXPECT_FALSE(std::filesystem::exists(folder / "a"));
    file.finish();
    std::vector<std::uint8_t> all;
    for (const char* name : {"a", "b", "c"}) {
        const std::vector<std::uint8_t> part = readTableFile(folder / name, 400);
        EXPECT_EQ(part.size(), *name == 'c' ? 200U : 400U);
        all.insert(all.end(), part.begin(), part.end());
    }
    EXPECT_EQ(all, bytes);
}

/// Distances in a file of the output folder give the same table; a disk that is too small is an
/// error like any other.
TEST_F(TableFolderTest, DistancesMayBeOnDisk) {
    TableStore store("");
    const int krk = tableOf(materialOf("krk")).id;
    const TableBytes bytes = makeTable(krk, store, {});
    EXPECT_EQ(makeTable(krk, store, {.scratch = folder}), bytes);
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_THROW((void)ScratchMemory(std::size_t{1} << 50, folder), AppError);
}

TEST_F(TableGeneratorTest, TablesAgreeWithTheirSuccessors) {
    TableStore store("");
    for (const int id : tablesToMake({"3men", "krrk", "krkr"})) {
        TableBytes bytes = makeTable(id, store, {.threads = 2});
        store.put(id, std::move(bytes));
        const bool isSmall = store.entries(id, 0).size() < 100'000;
        if (isSmall || !SlowBuild) {
            EXPECT_EQ(contradiction(id, store, 2).value_or(""), "");
        }
        EXPECT_EQ(contradictionInSample(id, store, 500).value_or(""), "");
    }
    const int krk = tableOf(materialOf("krk")).id;
    TableBytes damaged = {store.entries(krk, 0), store.entries(krk, 1)};
    damaged[1][1000] ^= 1;
    store.put(krk, damaged);
    EXPECT_NE(contradiction(krk, store, 2), std::nullopt);
}

}  // namespace
}  // namespace brivok::tables
