#include "../apps/tables/table_record.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/common/app_error.h"
#include "../apps/common/sha256.h"
#include "../apps/tables/commands.h"
#include "../apps/tables/outcome.h"
#include "../apps/tables/table_report.h"
#include "table_folder.h"

namespace brivok::tables {
namespace {

constexpr std::uint64_t KrkWhite = 27030;
constexpr std::uint64_t KrkBlack = 28644;

class TableRecordTest : public TableFolderTest {
protected:
    [[nodiscard]] std::string recordText() const {
        std::ifstream file(recordPath(folder, Krk));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void writeText(const std::string& text) const {
        std::ofstream(recordPath(folder, Krk)) << text;
    }

    static constexpr int Krk = 4;
};

TEST_F(TableRecordTest, SumsAreSha256) {
    const std::vector<std::uint8_t> abc = {'a', 'b', 'c'};
    EXPECT_EQ(sha256Of(abc), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    write("zeros", 200'000);
    EXPECT_EQ(sha256OfFile(folder / "zeros"), sha256Of(std::vector<std::uint8_t>(200'000)));
}

TEST_F(TableRecordTest, RecordsSayWhatTheyWereTold) {
    std::vector<std::uint8_t> white(KrkWhite, byteOf(Draw));
    white[711] = byteOf(winIn(9));
    white[712] = white[713] = byteOf(winIn(16));
    std::vector<std::uint8_t> black(KrkBlack, BrokenByte);
    black[12342] = byteOf(lossIn(2));
    TableRecord record{
        .signature = "krk",
        .making = Making{.seconds = 2, .processorSeconds = 3.5, .threads = 2, .peakBytes = 12345},
        .files = {recordOf(Krk, 0, white), recordOf(Krk, 1, black)}};
    record.files[1].packed = PackedRecord{.bytes = 99, .sha256 = sha256Of(white)};
    writeRecord(folder, record);
    const auto read = readRecord(folder, Krk);
    ASSERT_TRUE(read && read->making && read->files.size() == 2);
    EXPECT_EQ(read->making->processorSeconds, 3.5);
    const FileRecord& first = read->files[0];
    EXPECT_EQ(first.wins, 3U);
    EXPECT_EQ(first.winsIn.at(16), 2U);
    EXPECT_EQ(first.longestWin->index, 712U);
    EXPECT_EQ(first.longestWin->fen, "8/8/8/8/8/2k5/1R6/K7 w - - 0 1");
    EXPECT_FALSE(first.longestLoss || first.packed);
    EXPECT_EQ(first.sha256, sha256Of(white));
    EXPECT_EQ(read->files[1].withoutValue, KrkBlack - 1);
    EXPECT_EQ(read->files[1].packed->bytes, 99U);
    EXPECT_EQ(readRecord(folder, Krk + 1).has_value(), false);
}

TEST_F(TableRecordTest, DamagedRecordsAreRefused) {
    const std::vector<std::uint8_t> white(KrkWhite);
    const std::vector<std::uint8_t> black(KrkBlack);
    writeRecord(folder, {.signature = "krk",
                         .making = {},
                         .files = {recordOf(Krk, 0, white), recordOf(Krk, 1, black)}});
    const std::string good = recordText();
    const std::pair<std::string_view, std::string_view> changes[] = {
        {"\"krk\"", "\"kqk\""},
        {"27030", "27031"},
        {"28644", "\"28644\""},
        {"\"draws\"", "\"drawn\""},
        {"\"wins\": 0", "\"wins\": 1"},
        {"\"entry_bytes\": 1", "\"entry_bytes\": 2"},
        {"\"wins_in\": []", "\"wins_in\": [1]"},
        {"\"sha256\": \"", "\"sha256\": \"x"},
        {"}\n ]\n}", ""}};
    for (const auto& [from, to] : changes) {
        std::string text = good;
        const auto place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        writeText(text.replace(place, from.size(), to));
        EXPECT_THROW((void)readRecord(folder, Krk), AppError) << from;
    }
    writeText(good);
    EXPECT_TRUE(readRecord(folder, Krk));
}

/// The sum in the record is that of all parts together.
TEST_F(TableRecordTest, PartsOfATableArePackedAndUnpackedByThemselves) {
    const auto ofSide = [](std::uint64_t entries) {
        return FileRecord{.entries = entries, .draws = entries, .sha256 = std::string(64, '0')};
    };
    const TablebaseDescriptor& table = tableNamed("kqbkrn");
    writeRecord(folder, {.signature = "kqbkrn",
                         .making = {},
                         .files = {ofSide(table.size[0]), ofSide(table.size[1])}});
    const std::filesystem::path part = folder / "kqbkrn.1.nbw";
    write("kqbkrn.1.nbw", 10'000, {{5, 6}});
    const std::string sum = sha256OfFile(part);
    packFiles({.files = {part.string()}});
    std::filesystem::remove(part);
    unpackFiles({packedName(part).string()});
    EXPECT_EQ(sha256OfFile(part), sum);
    EXPECT_THROW((void)readTable(part), AppError);
}

/// Where White wins in 127, Black may be lost in 127, which a byte cannot say.
TEST_F(TableRecordTest, ReportsKnowTheLossesThatEntriesCannotSay) {
    constexpr int WinIn127 = -128;
    write("krk.nbw", KrkWhite, {{712, WinIn127}});
    write("krk.nbb", KrkBlack,
          {{7, byteOf(lossIn(126))}, {12342, BrokenByte}, {12343, BrokenByte}});
    const auto report = [this] {
        return reportOn(folder, [](const std::string&) {}).tables.front();
    };
    const ReportedMate* lost = nullptr;
    const ReportedTable table = report();
    lost = table.longestMate(1, false);
    ASSERT_NE(lost, nullptr);
    EXPECT_EQ(lost->mate.moves, 127U);
    EXPECT_EQ(lost->mate.index, 12342U);
    EXPECT_EQ(lost->mate.fen, "K7/8/8/8/8/8/8/3k1R2 b - - 0 1");
    EXPECT_EQ(lost->withoutValue, 2U);
    EXPECT_EQ(table.longestMateBy(0), 127U);
    write("krk.nbw", KrkWhite, {{712, 1}});  // a win in 126
    const ReportedTable shorter = report();
    lost = shorter.longestMate(1, false);
    ASSERT_NE(lost, nullptr);
    EXPECT_EQ(lost->mate.moves, 126U);
    EXPECT_EQ(lost->withoutValue, 0U);
}

}  // namespace
}  // namespace brivok::tables
