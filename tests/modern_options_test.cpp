#include "shell/modern/modern_options.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "board/piece_values.h"
#include "egtb/tablebase_probe.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/transposition_table.h"
#include "program.h"
#include "search/searcher.h"
#include "shell/modern/memory_spread.h"
#include "shell/uci_options.h"
#include "table_folder.h"

namespace brivok {
namespace {

class ModernOptionsTest : public TableFolderTest {
protected:
    ModernOptionsTest() : home(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
        program.run();
    }
    ~ModernOptionsTest() override { std::filesystem::current_path(home); }

    const std::filesystem::path home;
    Program program;
};

const ModernOption& named(std::string_view name) {
    return *std::ranges::find_if(
        modernOptions(), [name](const ModernOption& row) { return row.option.name == name; });
}

std::string shown(std::string_view name) { return named(name).rule.show(); }

/// Sets a value, then expects it to be shown.
void expectSet(std::string_view name, const std::string& value) {
    EXPECT_EQ(setModernOption(name, value), "") << name;
    EXPECT_EQ(shown(name), value) << name;
}

TEST_F(ModernOptionsTest, EveryOptionTakesItsValuesAndNoOthers) {
    settings.logInSingleFile = true;  // there is no folder for numbered logs
    for (const auto& [rule, option, form, isMemory] : modernOptions()) {
        const std::string name = option.name;
        const std::string before = rule.show();
        std::vector<std::string> good;
        std::vector<std::pair<std::string, std::string>> bad;
        if (option.kind == OptionKind::Spin) {
            // Sixteenths keep half a ply
            good = {std::to_string(option.lower), std::to_string(std::min(option.upper, 50))};
            bad = {{"", "a value is missing"}};
            const std::string range = " is not between " + std::to_string(option.lower) + " and " +
                                      std::to_string(option.upper);
            for (const std::string& value :
                 {std::to_string(option.lower - 1), std::to_string(option.upper + 1),
                  std::to_string(option.lower + 65536), std::string("99999999999999999999")}) {
                bad.emplace_back(value, value + range);
            }
            for (const char* value : {"x", "5x", "0x10", "1.5", "-", " 1"}) {
                bad.emplace_back(value, std::string(value) + " is not a whole number");
            }
            if (name == "UCI_Elo") good[1] = "2000";
        } else if (option.kind == OptionKind::Check) {
            bad = {{"", "a value is missing"}};
            good = {before == "true" ? "false" : "true", before};
            for (const char* value : {"Yes", "2", "true false"}) {
                bad.emplace_back(value, std::string(value) + " is not true or false");
            }
        } else if (option.kind == OptionKind::Button) {
            good = {""};
            bad = {{"now", "a button takes no value"}};
        } else if (name != "UCI_EngineAbout") {
            good = {"/My Tables;/x  y", ""};
        }
        for (const std::string& value : good) expectSet(name, value);
        const std::string kept = rule.show();
        for (const auto& [value, fault] : bad) {
            EXPECT_EQ(setModernOption(name, value), "option " + name + ": " + fault);
            EXPECT_EQ(rule.show(), kept) << name << " " << value;
        }
    }
    EXPECT_EQ(setModernOption("Colour", "red"), "no option named Colour");
    EXPECT_EQ(setModernOption("", "1"), "no option named ");
}

TEST_F(ModernOptionsTest, NamesAndValuesAsInterfacesWriteThem) {
    EXPECT_EQ(setModernOption("hash", "+2"), "");
    EXPECT_EQ(settings.hashMB, 2U);
    EXPECT_EQ(setModernOption("move  OVERHEAD", "20"), "");
    EXPECT_EQ(modernSettings.moveOverhead, 20);
    EXPECT_EQ(setModernOption("MateTheatExtension", "50"), "");
    EXPECT_EQ(settings.mateThreatExtension, 8);
    EXPECT_EQ(setModernOption("matethreatextension", "100"), "");
    EXPECT_EQ(settings.mateThreatExtension, 16);
    EXPECT_EQ(setModernOption("OwnBook", "0"), "");
    EXPECT_FALSE(settings.bookEnabled);
    EXPECT_EQ(setModernOption("OwnBook", "True"), "");
    EXPECT_TRUE(settings.bookEnabled);
    EXPECT_EQ(setModernOption("QueenValue", "950"), "");
    EXPECT_EQ(pieceValue[WhiteQueen], 950) << "the value is in use at once";
    EXPECT_EQ(setModernOption("BookFile", "My Book.bin"), "");
    EXPECT_EQ(settings.bookFileName, "My Book.bin");
    EXPECT_EQ(setModernOption("BookFile", "<empty>"), "");
    EXPECT_EQ(settings.bookFileName, "");
}

TEST_F(ModernOptionsTest, RefusedSizeKeepsTheTable) {
    evalHashTable.Find(5).key = 5;
    EXPECT_NE(setModernOption("EvaluationHash", "5000"), "");
    EXPECT_EQ(evalHashTable.Find(5).key, 5U);
    EXPECT_EQ(setModernOption("Clear Hash", ""), "");
    EXPECT_EQ(evalHashTable.Find(5).key, 0U);
}

TEST_F(ModernOptionsTest, FischerandomAndBack) {
    expectSet("UCI_Chess960", "true");
    EXPECT_EQ(settings.variant, Variant::Fischerandom);
    EXPECT_EQ(modernSettings.castlingStyle, CastlingStyle::KingOntoRook);
    expectSet("UCI_Chess960", "false");
    EXPECT_EQ(settings.variant, Variant::Normal);
    EXPECT_EQ(modernSettings.castlingStyle, CastlingStyle::Letters);
    settings.variant = Variant::NoCastle;
    expectSet("UCI_Chess960", "false");
    EXPECT_EQ(settings.variant, Variant::NoCastle);
}

TEST_F(ModernOptionsTest, FoldersKeepCaseAndBlanks) {
    write("My  Tables/kqk.nbb", 28644);
    const std::string path = "none;" + (folder / "My  Tables").string();
    expectSet("NalimovPath", path);
    EXPECT_EQ(tablebases.tbMaxMen, 3);
    EXPECT_EQ(settings.egtbDir, path);
}

TEST_F(ModernOptionsTest, ListingGoesOnWhereThePlainOneEnds) {
    listOptions(*theApplication);
    const std::string plain = program.output();
    listModernOptions(*theApplication);
    const std::string modern = program.output().substr(plain.size());
    EXPECT_TRUE(modern.starts_with(plain)) << modern;
    for (const char* line : {"\noption name MultiPV type spin default 1 min 1 max 64\n",
                             "\noption name UCI_Chess960 type check default false\n",
                             "\noption name UCI_EngineAbout type string default Brivok "}) {
        EXPECT_NE(modern.find(line), modern.npos) << modern;
    }
}

/// The values of the "option" features; empty if something else is in the text.
std::vector<std::string> parsedFeatures(std::string_view text) {
    constexpr std::string_view Start = " option=\"";
    std::vector<std::string> values;
    while (!text.empty()) {
        if (!text.starts_with(Start)) return {};
        text.remove_prefix(Start.size());
        const std::size_t end = text.find('"');
        if (end == text.npos) return {};
        values.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    return values;
}

TEST_F(ModernOptionsTest, Features) {
    settings.egtbDir = "/a \"b\"/C";
    settings.bookEnabled = false;
    const std::vector<std::string> values = parsedFeatures(optionFeatures());
    for (const char* expected :
         {"Hash -spin 1 1 1024", "Clear Hash -button", "OwnBook -check 0", "UseNullMove -check 1",
          "NalimovPath -path /a b/C", "BookFile -file libro.bin", "MultiPV -spin 1 1 64",
          "MateTheatExtension -spin 75 0 500", "Move Overhead -spin 10 0 5000"}) {
        EXPECT_EQ(std::ranges::count(values, expected), 1) << expected;
    }
    for (const std::string& value : values) {
        EXPECT_FALSE(value.starts_with("UCI_") || value.starts_with("Ponder ") ||
                     value.starts_with("PlayFRC "))
            << value;
    }
    EXPECT_EQ(values.size(), modernOptions().size() - 6);
}

TEST(MemorySpread, NeverMoreThanAllowed) {
    constexpr HashSizes Most{1024, 512, 64};
    for (const auto& [megabytes, sizes] : std::map<std::uint32_t, HashSizes>{
             {0, {1, 1, 1}},
             {4, {2, 1, 1}},
             {5, {2, 2, 1}},
             {64, {32, 16, 16}},
             {66, {64, 1, 1}},
             {4'000'000'000, Most},
         }) {
        EXPECT_EQ(spreadMemory(megabytes, Most), sizes) << megabytes;
    }
    for (std::uint32_t megabytes = 3; megabytes < 3000; ++megabytes) {
        const HashSizes sizes = spreadMemory(megabytes, Most);
        EXPECT_LE(sizes.main + sizes.evaluations + sizes.pawns, megabytes);
    }
}

/// Megabytes that the process has reserved.
std::uint64_t reserved() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) / Megabyte;
}

TEST_F(ModernOptionsTest, RefusedMemory) {
    if (SlowBuild) GTEST_SKIP() << "a sanitizer needs its address space";
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_AS, &before), 0);
    const rlimit small{(reserved() + 70) * Megabyte, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_AS, &small), 0);
    EXPECT_EQ(setModernOption("Hash", "1024"), "option Hash: there is no room for 1024 MB");
    EXPECT_EQ(settings.hashMB, 1U);
    setMemory(1000);
    EXPECT_EQ(settings.hashMB, 32U);
    EXPECT_EQ(::setrlimit(RLIMIT_AS, &before), 0);
}

TEST_F(ModernOptionsTest, Memory) {
    for (const std::uint32_t megabytes : {3U, 7U, 40U}) {
        setMemory(megabytes);
        const std::uint64_t bytes = transpositionTable.size() * std::uint64_t{32} +
                                    evalHashTable.size() * sizeof(EvalHashRecord) +
                                    pawnHashTable.size() * sizeof(PawnHashRecord);
        EXPECT_LE(bytes, std::uint64_t{megabytes} * Megabyte);
        EXPECT_GT(bytes, std::uint64_t{megabytes} * Megabyte / 2);
    }
    evalHashTable.Find(5).key = 5;
    setMemory(40);
    EXPECT_EQ(evalHashTable.Find(5).key, 5U) << "sizes that stay keep what the tables know";

    write("kqk.nbb", 28644);
    expectSet("NalimovPath", folder.string());
    expectSet("NalimovCache", "36");
    setMemory(40);
    EXPECT_EQ(settings.hashMB, 2U) << "the cache of the endgame tables counts";
}

TEST(StrengthLimit, NodesGrowWithTheRating) {
    EXPECT_EQ(nodesOfElo(LowestElo), nodesOfElo(LowestElo - 1000));
    EXPECT_EQ(nodesOfElo(HighestElo), nodesOfElo(HighestElo + 1000));
    for (int elo = LowestElo; elo < HighestElo; elo += 10) {
        EXPECT_LT(nodesOfElo(elo), nodesOfElo(elo + 10)) << elo;
        EXPECT_LT(nodesOfElo(elo + 10), nodesOfElo(elo) * 1.2 + 2) << "no leaps";
    }
}

}  // namespace
}  // namespace brivok
