#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "egtb/block_cache.h"
#include "egtb/material_lookup.h"
#include "egtb/table_files.h"
#include "egtb/table_index.h"
#include "search/searcher.h"
#include "table_folder.h"

namespace brivok {
namespace {

constexpr std::uint64_t KqkSize[2] = {25629, 28644};
constexpr std::uint32_t BlockBytes = 8260;  // budget of a block

class TablebaseTest : public TableFolderTest {
protected:
    /// Writes both sides of kqk, with all entries the same.
    void writeKqk(int first, int second) const {
        for (const unsigned side : {0U, 1U}) {
            std::map<std::uint64_t, int> bytes;
            const std::uint64_t size = KqkSize[side];
            for (std::uint64_t i = 0; i < size; ++i) bytes[i] = side == 0 ? first : second;
            write(side == 0 ? "kqk.nbw" : "kqk.nbb", size, bytes);
        }
    }

    [[nodiscard]] static std::int32_t valueAt(std::string_view table, unsigned side,
                                              std::uint64_t index) {
        return ProbeTableValue(tableNamed(table).id, side, index);
    }
};

TEST_F(TablebaseTest, BytesAreWidened) {
    std::map<std::uint64_t, int> bytes;
    for (int i = 0; i < 256; ++i) bytes[static_cast<std::uint64_t>(i)] = i;
    bytes.insert({{8191, 1}, {8192, 2}, {25628, 3}});
    write("kqk.nbw", KqkSize[0], bytes);
    open();
    EXPECT_EQ(valueAt("kqk", 0, 0), 0);
    for (int i = 1; i < 127; ++i) {
        EXPECT_EQ(valueAt("kqk", 0, static_cast<std::uint64_t>(i)), 32640 + i);
        EXPECT_EQ(valueAt("kqk", 0, static_cast<std::uint64_t>(256 - i)), -32640 - i);
    }
    EXPECT_EQ(valueAt("kqk", 0, 127), NoValue);
    EXPECT_EQ(valueAt("kqk", 0, 129), -32640);
    EXPECT_EQ(valueAt("kqk", 0, 128), 32640);
    EXPECT_EQ(valueAt("kqk", 0, 8191), 32641);
    EXPECT_EQ(valueAt("kqk", 0, 8192), 32642);
    EXPECT_EQ(valueAt("kqk", 0, 25628), 32643);
    EXPECT_EQ(valueAt("kqk", 0, 25629), NoValue);
    EXPECT_EQ(valueAt("kqk", 0, NoIndex), NoValue);
    EXPECT_EQ(valueAt("kqk", 1, 0), NoValue) << "no file";
}

TEST_F(TablebaseTest, WordsStandAsTheyAreAndEndWithTheirFile) {
    // Plain files with two-byte entries are not checked for length; this one ends within an entry.
    write("krnknn.nbw", 8192 * 2 + 3,
          {{0, 0x02},
           {1, 0x80},
           {2, 0xFE},
           {3, 0x7F},
           {4, 0xFF},
           {5, 0x7F},
           {8190, 0x80},
           {8192, 0x12},
           {8193, 0x34},
           {16384, 0x81},
           {16385, 0x01},
           {16386, 0x7E}});
    open();
    EXPECT_EQ(tablebases.tbMaxMen, 6);
    EXPECT_EQ(valueAt("krnknn", 0, 0), -32766);
    EXPECT_EQ(valueAt("krnknn", 0, 1), 32766);
    EXPECT_EQ(valueAt("krnknn", 0, 2), NoValue);
    EXPECT_EQ(valueAt("krnknn", 0, 4095), 0x80);
    EXPECT_EQ(valueAt("krnknn", 0, 4096), 0x3412);
    EXPECT_EQ(valueAt("krnknn", 0, 8192), 0x181);
    EXPECT_EQ(valueAt("krnknn", 0, 8193), NoValue) << "half an entry";
    EXPECT_EQ(valueAt("krnknn", 0, 1'000'000), NoValue) << "behind the end";
    EXPECT_EQ(valueAt("krnknn", 0, 8192), 0x181) << "the file is still good";
}

TEST_F(TablebaseTest, PartsOfSplitAndLargeFiles) {
    constexpr std::uint64_t Part = std::uint64_t{1} << 31U;
    write("krbkbn.0.nbw", 8192, {{5, 10}});
    write("krbkbn.1.nbw", 8192 * 3, {{8192 * 2 + 7, 11}});
    write("krnkbn.0.nbb", 1);
    write("krnkbn.1.nbb", 8192, {{0, 0x11}, {1, 0x22}});
    const std::uint64_t last = tableNamed("kppkpp").size[0] - 1;
    write("kppkpp.nbw", 2 * last + 2, {{2 * last, 0x33}, {2 * last + 1, 0x44}});
    open();
    EXPECT_EQ(valueAt("krbkbn", 0, 5), 32650);
    EXPECT_EQ(valueAt("krbkbn", 0, Part + 8192 * 2 + 7), 32651);
    EXPECT_EQ(valueAt("krbkbn", 0, 2 * Part + 5), NoValue) << "no such part";
    EXPECT_EQ(valueAt("krbkbn", 0, 5), 32650);
    EXPECT_EQ(valueAt("krnkbn", 1, Part / 2), 0x2211);
    EXPECT_EQ(valueAt("kppkpp", 1, last), 0x4433) << "one file for both sides";
}

TEST_F(TablebaseTest, FaultyEntriesAreNotRead) {
    write("kppkp.nbb", tableNamed("kppkp").size[1]);
    open();
    EXPECT_EQ(valueAt("kppkp", 1, 56802428), -32639);
    EXPECT_EQ(valueAt("kppkp", 1, 71071628), -32639);
    EXPECT_EQ(valueAt("kppkp", 1, 71071629), 0);
}

/// Random reads of seven chunks through caches of all small sizes.
TEST_F(TablebaseTest, FullCacheStaysConsistent) {
    std::mt19937 random(5);
    std::map<std::uint64_t, int> bytes[2];
    for (const unsigned side : {0U, 1U}) {
        for (std::uint64_t i = 0; i < KqkSize[side]; ++i) {
            bytes[side][i] = static_cast<int>(random() % 127);
        }
        write(side == 0 ? "kqk.nbw" : "kqk.nbb", KqkSize[side], bytes[side]);
    }
    for (std::uint32_t blocks = 1; blocks <= 9; ++blocks) {
        open(blocks * BlockBytes + 100);
        ASSERT_EQ(blockCache.blockCount(), blocks);
        for (int reads = 0; reads < 2000; ++reads) {
            const unsigned side = random() % 2;
            const std::uint64_t index = random() % KqkSize[side];
            const int byte = bytes[side][index];
            ASSERT_EQ(valueAt("kqk", side, index), byte == 0 ? 0 : 32640 + byte);
        }
    }
}

TEST_F(TablebaseTest, LeastRecentlyReadChunkLeaves) {
    const auto chunk = [](int number) {
        return valueAt("kqk", 0, 8192U * static_cast<unsigned>(number));
    };
    writeKqk(1, 0);
    open(3 * BlockBytes);
    for (const int number : {0, 1, 2, 0, 3}) EXPECT_EQ(chunk(number), 32641);
    writeKqk(2, 0);  // same file, reread only for a chunk that has been evicted
    for (const int number : {0, 2, 3}) EXPECT_EQ(chunk(number), 32641);
    EXPECT_EQ(chunk(1), 32642);
    for (const int number : {2, 3}) EXPECT_EQ(chunk(number), 32641);
    EXPECT_EQ(chunk(0), 32642);
}

TEST_F(TablebaseTest, SizesOfTheCache) {
    writeKqk(1, 2);
    open();
    EXPECT_EQ(blockCache.blockCount(), 126U);
    EXPECT_FALSE(blockCache.InitCache(31));
    for (const std::uint32_t bytes : {32U, BlockBytes - 1}) {
        EXPECT_TRUE(blockCache.InitCache(bytes));
        EXPECT_EQ(blockCache.blockCount(), 0U);
        EXPECT_EQ(valueAt("kqk", 0, 0), NoValue);
    }
    SetCacheSize(0);
    EXPECT_EQ(tablebases.tbCacheBytes, 0U);
    EXPECT_EQ(valueAt("kqk", 0, 0), NoValue);
    SetCacheSize(BlockBytes);
    EXPECT_EQ(valueAt("kqk", 0, 0), 32641) << "the file has not been given up";
}

TEST_F(TablebaseTest, FilesThatVanishOrShrink) {
    std::int32_t score = 7;
    writeKqk(1, 2);
    open(2 * BlockBytes);
    std::filesystem::remove(folder / "kqk.nbb");
    setPosition("8/8/8/8/8/4K3/3Q4/3k4 b - - 0 1");
    EXPECT_FALSE(TablebaseProbe(board, 1, score));
    EXPECT_EQ(tablebases.tbProbes, 1U);
    EXPECT_EQ(tablebases.tbHits, 0U);
    EXPECT_EQ(score, 7);
    writeKqk(1, 2);
    EXPECT_FALSE(TablebaseProbe(board, 1, score)) << "given up for good";

    EXPECT_EQ(valueAt("kqk", 0, 0), 32641);
    std::filesystem::resize_file(folder / "kqk.nbw", 8192 + 10);
    EXPECT_EQ(valueAt("kqk", 0, 8192 + 9), 32641);
    EXPECT_EQ(valueAt("kqk", 0, 8192 + 10), NoValue) << "a block holds what was there before";
    EXPECT_EQ(valueAt("kqk", 0, 2 * 8192), NoValue);
    EXPECT_EQ(valueAt("kqk", 0, 0), 32641);
}

TEST_F(TablebaseTest, FilesAreClosedWhenNoMoreCanBeOpened) {
    writeKqk(1, 2);
    open();
    EXPECT_EQ(valueAt("kqk", 0, 0), 32641);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const int next = ::dup(0);  // the lowest free descriptor
    ::close(next);
    const rlimit full{static_cast<rlim_t>(next), before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &full), 0);
    EXPECT_EQ(valueAt("kqk", 1, 0), 32642);
    EXPECT_EQ(valueAt("kqk", 0, 9000), 32641);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST_F(TablebaseTest, MaterialFindsItsTable) {
    const auto found = [](std::uint8_t wp, std::uint8_t wn, std::uint8_t wq, std::uint8_t bp,
                          std::uint8_t bn, std::uint8_t bq) {
        return TableIdFromCounts({wp, wn, 0, 0, wq, bp, bn, 0, 0, bq});
    };
    write("kqkn.nbw", tableNamed("kqkn").size[0]);
    write("kqkq.nbw", tableNamed("kqkq").size[0]);
    open();
    const int kqkn = tableNamed("kqkn").id;
    EXPECT_EQ(found(0, 0, 1, 0, 1, 0), kqkn);
    EXPECT_EQ(found(0, 1, 0, 0, 0, 1), -kqkn);
    EXPECT_EQ(found(0, 0, 1, 0, 0, 1), tableNamed("kqkq").id);
    EXPECT_EQ(found(0, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(found(0, 0, 0, 4, 0, 0), 0);
    EXPECT_EQ(found(0, 1, 1, 0, 1, 1), 0);
    EXPECT_EQ(found(8, 2, 1, 8, 2, 1), 0);
    std::filesystem::remove(folder / "kqkn.nbw");
    open();
    EXPECT_EQ(found(0, 0, 1, 0, 1, 0), kqkn) << "none is forgotten";

    // With an extra king, the position is not looked up as if that king were absent.
    writeKqk(0, 0);
    open();
    std::int32_t score = 0;
    setPosition("8/8/3k4/8/8/3K4/3Q4/8 w - - 0 1");
    EXPECT_TRUE(TablebaseProbe(board, 1, score));
    setPosition("8/8/3k4/8/8/3K4/3Q4/K7 w - - 0 1");
    EXPECT_FALSE(TablebaseProbe(board, 1, score));
}

TEST_F(TablebaseTest, DirectoriesAndCountOfMen) {
    write("one/kqk.nbw", KqkSize[0], {{0, 1}});
    write("two/kqk.nbw", KqkSize[0], {{0, 2}});
    write("two/kqk.nbb", KqkSize[1], {{0, 3}});
    std::filesystem::create_directories(folder / "two/krk.nbw");  // not a file
    const std::string one = (folder / "one").string();
    const std::string two = (folder / "two/").string();
    open(Megabyte, one + "," + two);
    EXPECT_EQ(tablebases.tbMaxMen, 3);
    EXPECT_EQ(valueAt("kqk", 0, 0), 32641);
    EXPECT_EQ(valueAt("kqk", 1, 0), 32643);
    InitTablebases(one + "," + two, 2 * Megabyte);
    EXPECT_EQ(tablebases.tbCacheBytes, Megabyte) << "nothing is done twice";
    open(Megabyte, two + ";" + one);
    EXPECT_EQ(valueAt("kqk", 0, 0), 32642);
    for (const auto& [name, men] : {std::pair{"kqqk", 4}, {"kppkp", 5}, {"knnknn", 6}}) {
        write(std::string(name) + ".nbw", tableNamed(name).size[0]);
        open();
        EXPECT_EQ(tablebases.tbMaxMen, men);
    }
    open(Megabyte, one + "x");
    EXPECT_EQ(tablebases.tbMaxMen, 0);
}

TEST_F(TablebaseTest, NamesInCapitals) {
    write("My/Tables/KQK.NBW", KqkSize[0], {{0, 1}});
    write("My/Tables/KqK.nbb", KqkSize[1], {{0, 2}});
    const std::string base = folder.string();
    for (const char* path : {"/My/Tables", "/my/tables", "/MY/tables/", "/my/../my/./Tables"}) {
        open(Megabyte, "none," + base + path);
        EXPECT_EQ(valueAt("kqk", 0, 0), 32641) << path;
        EXPECT_EQ(valueAt("kqk", 1, 0), 32642) << path;
    }
    // A name as it is written goes first, for files and for folders, if it leads to the end.
    write("My/Tables/kqk.nbw", KqkSize[0], {{0, 3}});
    write("my/other", 0);
    open(Megabyte, base + "/my/tables");
    EXPECT_EQ(valueAt("kqk", 0, 0), 32643);
    write("my/Tables/kqk.nbw", KqkSize[0], {{0, 4}});
    open(Megabyte, base + "/my/tables");
    EXPECT_EQ(valueAt("kqk", 0, 0), 32644);
    for (const char* path : {"/my/tables/none", "/none/../my/tables"}) {
        open(Megabyte, base + path);
        EXPECT_EQ(tablebases.tbMaxMen, 0) << path;
    }
}

class TablebaseSearchTest : public TablebaseTest {
protected:
    int think(std::string_view fen, int depth) {
        tablebases.tbProbes = tablebases.tbHits = 0;
        setPosition(fen);
        SearchListener silent;
        (void)theSearcher.think({.maxIteration = depth}, silent);
        theSearcher.searchMode = SearchMode::Idle;
        return theSearcher.iterationScore;
    }
};

TEST_F(TablebaseSearchTest, ScoresOfHits) {
    const char* const fen = "8/8/3k4/8/8/3K4/3Q4/8 w - - 0 1";
    writeKqk(127, -119);  // mated in 7
    open();
    EXPECT_LT(think(fen, 1), 5000);
    EXPECT_EQ(tablebases.tbProbes, 0U) << "no deeper than the iteration";
    EXPECT_EQ(think(fen, 3), 32767 - 14 - 2);
    EXPECT_EQ(tablebases.tbHits, tablebases.tbProbes);
    writeKqk(0, 0);
    open();
    EXPECT_EQ(think(fen, 3), 1) << "a draw with more material";
    EXPECT_EQ(think("8/8/3k4/8/8/3K4/3Q4/8 b - - 0 1", 3), -1) << "and one with less";
}

/// Beyond the first plies, tables are probed only if the side to move captured with its last move.
TEST_F(TablebaseSearchTest, ProbesFollowCaptures) {
    writeKqk(10, 127);
    std::filesystem::remove(folder / "kqk.nbb");
    open();
    (void)think("8/8/3k4/8/8/3K4/3Q4/8 w - - 0 1", 3);
    EXPECT_GT(tablebases.tbProbes, 0U);
    EXPECT_EQ(tablebases.tbHits, 0U) << "the side to move at ply 3 has only moved";
    (void)think("8/8/3k4/3r4/8/8/3Q4/3K4 w - - 0 1", 3);
    EXPECT_GT(tablebases.tbHits, 0U) << "it has taken the rook";
    write("krk.nbb", tableNamed("krk").size[1]);
    std::filesystem::remove(folder / "kqk.nbw");
    open();
    (void)think("8/8/3k4/3r4/8/8/3Q4/3K4 w - - 0 1", 3);
    EXPECT_EQ(tablebases.tbHits, 0U) << "the other side has taken the queen";
}

}  // namespace
}  // namespace brivok
