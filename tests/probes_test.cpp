#include <cstdlib>
#include <map>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "egtb/table_files.h"
#include "table_folder.h"

namespace brivok {
namespace {

/// Recorded positions with their tables, indices, values on the wide scale and scores at ply 1.
class ProbesTest : public TableFolderTest {
protected:
    const nlohmann::json records = loadJson("probes.json");

    /// Compares probes of all registered tables with the records.
    void expectRecordedScores() {
        int tested = 0;
        for (const auto& record : records) {
            const auto fen = record["fen"].get<std::string>();
            SCOPED_TRACE(fen);
            setPosition(fen);
            std::int32_t score = 12345;
            if (record["score"].is_null()) {
                EXPECT_FALSE(TablebaseProbe(board, 1, score));
                EXPECT_EQ(score, 12345);
                continue;
            }
            const TablebaseDescriptor& table = tableNamed(record["table"].get<std::string>());
            const unsigned side = record["side"];
            if (tableSide(table.id, fileSide(table, side)) == nullptr) continue;
            ++tested;
            EXPECT_EQ(ProbeTableValue(table.id, side, record["index"]), record["value"]);
            ASSERT_TRUE(TablebaseProbe(board, 1, score));
            EXPECT_EQ(score, record["score"]);
        }
        EXPECT_GT(tested, 0);
    }
};

/// The byte that a one-byte table stores for a value on the wide scale.
int storedByte(const nlohmann::json& value) {
    constexpr int Shift = 32640;
    if (value.is_null()) return 127;
    const int wide = value;
    return wide > 0 ? wide - Shift : wide < 0 ? wide + Shift : 0;
}

TEST_F(ProbesTest, FilesWithTheRecordedEntries) {
    std::map<std::string, std::map<std::uint64_t, int>> entries[2];
    for (const auto& record : records) {
        if (!record.contains("side")) continue;
        const std::string name = record["table"];
        if (name.size() > 4) continue;  // recorded without a file
        const unsigned side = fileSide(tableNamed(name), record["side"]);
        entries[side][name][record["index"]] = storedByte(record["value"]);
    }
    for (const std::size_t side : {0U, 1U}) {
        for (const auto& [name, bytes] : entries[side]) {
            write(name + (side == 0 ? ".nbw" : ".nbb"), tableNamed(name).size[side], bytes);
        }
    }
    open();
    expectRecordedScores();
}

/// BRIVOK_TABLES may name a folder with real tables, some or all of those with up to four men.
TEST_F(ProbesTest, RealTables) {
    const char* const tables = std::getenv("BRIVOK_TABLES");
    if (tables == nullptr) GTEST_SKIP() << "BRIVOK_TABLES names no folder";
    open(Megabyte, tables);
    ASSERT_GT(tablebases.tbMaxMen, 0);
    expectRecordedScores();
}

}  // namespace
}  // namespace brivok
