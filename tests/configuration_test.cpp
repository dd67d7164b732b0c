#include "shell/configuration.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "board/piece_values.h"
#include "engine_fixture.h"
#include "shell/base/logger.h"
#include "shell/settings_table.h"

namespace brivok {
namespace {

namespace fs = std::filesystem;

constexpr char AllKeys[] =
    "HashMB: 2\nPHashMB: 3\nEHashMB: 4\nEGTBCacheMB: 5\nOPNBookFile: My-Book.BIN\n"
    "Resign: false\nCreateLog: true\nLogInSingleFile: true\nUniqueLogPerGame: true\n"
    "OpeningsBook: false\nExtraInfo: false\nLazyEval: true\nNullMove: false\nFutility: true\n"
    "DeltaPrune: true\nIID: false\nLogFolder: My/Logs/\nEGTBDir: My;Tables\n"
    "AspirationWindow: 50\nResignValue: -70000\nNullMoveMin: 250\nNullMoveMax: 400\n"
    "CheckExtension: 75\nRecapExtension: 50\nSingleRepCheckExtension: 25\n"
    "MateThreatExtension: 33\nPawnPushExtension: 100\nPawnValue: 90\nKnightValue: 310\n"
    "BishopValue: 320\nRookValue: 510\nQueenValue: 950\nVariant: frc\n";

/// Runs in an empty folder.
class ConfigurationTest : public EngineTest {
protected:
    ConfigurationTest() : home(fs::current_path()) {
        std::string name = fs::temp_directory_path() / "brivok-XXXXXX";
        folder = ::mkdtemp(name.data());
        fs::current_path(folder);
    }
    ~ConfigurationTest() override {
        fs::current_path(home);
        fs::remove_all(folder);
    }

    /// Applies a file with this text to the current settings.
    static const Settings& add(const std::string& text) {
        std::ofstream("brivok.ini", std::ios::binary) << text;
        ReadConfiguration();
        return settings;
    }

    /// Applies a file with this text to the default settings.
    static const Settings& read(const std::string& text) {
        settings = Settings{};
        return add(text);
    }

    fs::path home;
    fs::path folder;
};

TEST_F(ConfigurationTest, EveryKey) {
    const Settings expected{.variant = Variant::Fischerandom,
                            .hashMB = 2,
                            .PHashMB = 3,
                            .EHashMB = 4,
                            .EGTBCacheBytes = 5242880,
                            .egtbDir = "My;Tables",
                            .bookFileName = "my-book.bin",
                            .bookEnabled = false,
                            .resignEnabled = false,
                            .resignValue = -70000,
                            .createLog = true,
                            .logInSingleFile = true,
                            .uniqueLogPerGame = true,
                            .logFolder = "My/Logs/",
                            .extraInfo = false,
                            .lazyEvalEnabled = true,
                            .useNullMove = false,
                            .useFutility = true,
                            .useDeltaPruning = true,
                            .useIid = false,
                            .aspirationWindow = 50,
                            .nullMoveMin = 40,
                            .nullMoveMax = 64,
                            .checkExtension = 12,
                            .recaptureExtension = 8,
                            .oneReplyExtension = 4,
                            .mateThreatExtension = 5,
                            .pawnPushExtension = 16,
                            .PawnValue = 90,
                            .KnightValue = 310,
                            .BishopValue = 320,
                            .RookValue = 510,
                            .QueenValue = 950};
    EXPECT_TRUE(read(AllKeys) == expected);
    EXPECT_EQ(pieceValue, (decltype(pieceValue){0, 90, 90, 310, 310, KingValue, KingValue, 510, 510,
                                                950, 950, 320, 320, 0}));
    fs::remove("brivok.ini");
    ReadConfiguration();
    fs::create_directory("brivok.ini");
    ReadConfiguration();
    EXPECT_TRUE(settings == expected) << "without a file the settings stay";
}

TEST_F(ConfigurationTest, EachKeySetsSomethingOfItsOwn) {
    std::vector<Settings> results;
    for (const Setting& setting : settingsTable()) {
        if (setting.key == nullptr) continue;
        settings = Settings{};
        // At least one of these is not the default
        for (const char* value : {"other", "7", "true", "frc"}) {
            if (settings == Settings{}) {
                EXPECT_TRUE(setKey(setting.key, value));
            }
        }
        EXPECT_FALSE(settings == Settings{}) << setting.key;
        EXPECT_EQ(std::count(results.begin(), results.end(), settings), 0) << setting.key;
        results.push_back(settings);
    }
    EXPECT_FALSE(setKey("HashMB", "7"));
}

TEST_F(ConfigurationTest, ShippedFileHoldsTheDefaultsAndTurnsTheModernInterfaceOn) {
    read(AllKeys);
    settings.egtbDir.clear();  // no line can express this
    fs::copy_file(dataPath("../../data/brivok.ini"), "brivok.ini",
                  fs::copy_options::overwrite_existing);
    ReadConfiguration();
    Settings expected;
    expected.modernInterface = true;
    EXPECT_TRUE(settings == expected);
    EXPECT_TRUE(wantsModernInterface());
}

TEST_F(ConfigurationTest, Rules) {
    EXPECT_EQ(read("HashMB: 0\nPHashMB: none").hashMB, 1U);
    EXPECT_EQ(settings.PHashMB, 1U);
    EXPECT_EQ(read("HashMB: -1").hashMB, 0xFFFFFFFFU);
    EXPECT_EQ(read("HashMB: 4294967296").hashMB, 1U) << "0 in the width of the setting";
    EXPECT_EQ(read("EGTBCacheMB: 0").EGTBCacheBytes, 0U);
    EXPECT_EQ(read("EGTBCacheMB: 4097").EGTBCacheBytes, 1U << 20U);
    EXPECT_EQ(read("ResignValue: x").resignValue, 0);
    EXPECT_EQ(read("ResignValue: +7x9").resignValue, 7);
    EXPECT_EQ(read("AspirationWindow: -12.9").aspirationWindow, -12);
    EXPECT_EQ(read("AspirationWindow: 70000").aspirationWindow, 70000 - 65536);
    EXPECT_EQ(read("PawnValue: 99999999999999999999").PawnValue, -32768);
    for (const auto& [value, units] :
         {std::pair{"33", 5}, {"-33", -5}, {"x", 0}, {"1000000", 28928}}) {
        EXPECT_EQ(read(std::string("CheckExtension: ") + value).checkExtension, units) << value;
    }
    for (const auto& [value, truth] : {std::pair{"TRUE", true},
                                       {"tRue", true},
                                       {"1", false},
                                       {"yes", false},
                                       {"truer", false}}) {
        EXPECT_EQ(read(std::string("Resign: ") + value).resignEnabled, truth) << value;
    }
    for (const auto& [value, variant] : {std::pair{"FRC", Variant::Fischerandom},
                                         {"NoCastle", Variant::NoCastle},
                                         {"fischerandom", Variant::Normal}}) {
        settings.variant = Variant::NoCastle;
        EXPECT_EQ(add(std::string("Variant: ") + value).variant, variant) << value;
    }
}

TEST_F(ConfigurationTest, Lines) {
    EXPECT_EQ(read(" \t HashMB:\t \v8 9 ; and more\n").hashMB, 8U);
    EXPECT_EQ(read("HashMB: 8\r\n\r\nPHashMB: 9\r\nLogFolder: x\r").PHashMB, 9U);
    EXPECT_EQ(settings.logFolder, "x");
    EXPECT_EQ(read("HashMB: 8\nHashMB: 9\nHashMB: 0").hashMB, 9U);
    for (const char* line : {"", " ", "HashMB:", "HashMB:8", "HashMB:8 9", "HashMB : 8", "HashMB 8",
                             "hashmb: 8", "XHashMB: 8", ";HashMB: 8", "; HashMB: 8", "[ HashMB: 8",
                             "[x]HashMB: 8", "x HashMB: 8"}) {
        EXPECT_TRUE(read(line) == Settings{}) << line;
    }
    for (const char* end : {"\n", "\r\n"}) {
        const std::string last = std::string(end) + "EHashMB: 9";
        std::string longest = "PHashMB: 8";
        longest.resize(4095, ' ');
        EXPECT_EQ(read(longest + last).PHashMB, 8U);
        EXPECT_EQ(settings.EHashMB, 9U);
        EXPECT_EQ(read("HashMB: 7\n" + longest + " " + last).PHashMB, 1U) << "a line too long";
        EXPECT_EQ(settings.EHashMB, 1U) << "ends the reading";
        EXPECT_EQ(settings.hashMB, 7U);
        EXPECT_EQ(read(longest + longest + last).EHashMB, 1U);
    }
}

TEST_F(ConfigurationTest, LogFolders) {
    CreateLogFolders("a//b/c/name");
    CreateLogFolders("a/b/c/");
    EXPECT_TRUE(fs::is_directory("a/b/c") && fs::is_empty("a/b/c"));
    CreateLogFolders((folder / "d/e/").string());
    EXPECT_TRUE(fs::is_directory("d/e"));
    std::string longName(401, 'x');
    longName[200] = longName[400] = '/';
    CreateLogFolders(longName);
    EXPECT_TRUE(fs::is_directory(longName));
    std::ofstream("file") << "x";
    testing::internal::CaptureStdout();
    CreateLogFolders("file/g/h/");
    CreateLogFolders("name");
    CreateLogFolders("");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error creating directory!\n");
}

}  // namespace
}  // namespace brivok
