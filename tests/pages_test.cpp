// Compares the pages of docs/, the settings file and the fuzz dictionaries with the tables of the
// program.

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "engine_fixture.h"
#include "search/searcher.h"
#include "shell/base/version.h"
#include "shell/extra_handler.h"
#include "shell/modern/go_order.h"
#include "shell/modern/modern_options.h"
#include "shell/modern/modern_uci_handler.h"
#include "shell/modern/modern_winboard_handler.h"
#include "shell/settings_table.h"
#include "shell/uci_handler.h"
#include "shell/winboard_handler.h"

namespace brivok {
namespace {

using Cells = std::vector<std::string>;
using Names = std::set<std::string>;

std::vector<std::string> linesOf(const std::string& path) {
    std::ifstream file(dataPath("../../" + path));
    EXPECT_TRUE(file) << path;
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// The texts between backticks.
std::vector<std::string> codeOf(const std::string& cell) {
    std::vector<std::string> pieces;
    std::istringstream text(cell);
    bool code = false;
    for (std::string piece; std::getline(text, piece, '`'); code = !code) {
        if (code) pieces.push_back(piece);
    }
    return pieces;
}

/// All table rows below a heading, subsections included, whose table starts with this column head.
std::vector<Cells> rowsOf(const std::string& page, const std::string& heading,
                          const std::string& head) {
    std::vector<Cells> rows;
    std::size_t level = 0;  // of the heading, once found
    bool taken = false;
    for (const std::string& line : linesOf(page)) {
        const std::size_t marks = std::min(line.find_first_not_of('#'), line.size());
        if (level != 0 && marks != 0 && marks <= level) break;
        if (marks != 0 && line.substr(marks) == " " + heading) level = marks;
        if (level == 0) continue;
        Cells cells;
        std::istringstream text(line.substr(std::min<std::size_t>(1, line.size())));
        for (std::string cell; std::getline(text, cell, '|');) cells.push_back(trimmed(cell));
        if (!line.starts_with('|')) {
            taken = false;
        } else if (cells.at(0) == head) {
            taken = true;
        } else if (taken && !cells.at(0).starts_with("---")) {
            rows.push_back(cells);
        }
    }
    EXPECT_FALSE(rows.empty()) << page << ": " << heading;
    return rows;
}

Names entriesOf(const std::string& path) {
    Names entries;
    for (const std::string& line : linesOf(path)) {
        if (line.size() > 1 && line[0] == '"') entries.insert(line.substr(1, line.size() - 2));
    }
    return entries;
}

std::string kindText(OptionKind kind) {
    switch (kind) {
        case OptionKind::Spin: return "spin";
        case OptionKind::Check: return "check";
        case OptionKind::String: return "string";
        case OptionKind::Button: break;
    }
    return "button";
}

/// Adds a failure for each entry that only one of the two has.
void expectSame(const std::string& file, const Names& told, const Names& expected) {
    for (const std::string& entry : expected) {
        EXPECT_TRUE(told.contains(entry)) << file << " lacks " << entry;
    }
    for (const std::string& entry : told) {
        EXPECT_TRUE(expected.contains(entry)) << file << " should not have " << entry;
    }
}

class PagesTest : public EngineTest {};

std::string rowText(const std::string& name, const std::string& kind, const std::string& initial,
                    const std::string& range) {
    return "| `" + name + "` | " + kind + " | " + initial + " | " + range + " |";
}

std::string rowOf(const Option& option, const std::string& initial) {
    std::string range;
    if (option.kind == OptionKind::Spin) {
        range = std::to_string(option.lower) + " to " + std::to_string(option.upper);
    }
    return rowText(option.name, kindText(option.kind), initial, range);
}

/// Compares the table of options below a heading with the expected rows, in their order. Returns
/// the meanings by name.
std::map<std::string, std::string> expectOptions(const std::string& heading,
                                                 const std::vector<std::string>& expected) {
    const std::string page = "docs/protocols.md";
    std::vector<std::string> told;
    std::map<std::string, std::string> meanings;
    for (const Cells& row : rowsOf(page, heading, "Option")) {
        EXPECT_EQ(row.size(), 5U) << row[0];
        if (row.size() != 5) continue;
        const std::string name = codeOf(row[0]).at(0);
        told.push_back(rowText(name, row[1], row[2], row[3]));
        meanings[name] = row[4];
    }
    expectSame(page, {told.begin(), told.end()}, {expected.begin(), expected.end()});
    EXPECT_TRUE(::testing::Test::HasFailure() || told == expected)
        << page << " has another order than the listing";
    return meanings;
}

TEST_F(PagesTest, Options) {
    std::vector<std::string> expected;
    std::map<std::string, std::string> acceptedNames;
    for (const auto& [rule, key, option] : settingsTable()) {
        if (option.name == nullptr) continue;
        expected.push_back(rowOf(option, rule.show()));
        if (option.acceptedName != nullptr) acceptedNames[option.name] = option.acceptedName;
    }
    std::map<std::string, std::string> meanings = expectOptions("Options", expected);
    for (const auto& [name, accepted] : acceptedNames) {
        const std::vector<std::string> others = codeOf(meanings[name]);
        EXPECT_EQ(std::count(others.begin(), others.end(), accepted), 1) << meanings[name];
    }
}

TEST_F(PagesTest, FurtherOptions) {
    const auto plainOptions = std::ranges::count_if(
        settingsTable(), [](const Setting& setting) { return setting.option.name != nullptr; });
    std::vector<std::string> expected;
    for (const ModernOption& row :
         modernOptions().subspan(static_cast<std::size_t>(plainOptions))) {
        std::string initial = row.rule.show();
        if (initial.starts_with(EngineName)) {
            initial.replace(0, std::string(EngineName).size(), "Brivok ...");
        }
        expected.push_back(rowOf(row.option, initial));
    }
    (void)expectOptions("Further options", expected);
}

TEST_F(PagesTest, Keys) {
    Names keys;
    for (const Setting& setting : settingsTable()) {
        if (setting.key != nullptr) keys.insert(setting.key);
    }
    const std::string file = "data/brivok.ini";
    Names shippedKeys;
    Names shipped;
    for (const std::string& line : linesOf(file)) {
        std::istringstream words(line);
        std::string key;
        if (!(words >> key) || key[0] == ';' || key[0] == '[') continue;
        EXPECT_TRUE(shippedKeys.insert(key).second) << file << " has twice " << key;
        std::string value;
        words >> value;
        if (key == "ModernInterface:") {
            // The page tells what holds without the line.
            EXPECT_EQ(value, "true");
            value = Settings{}.modernInterface ? "true" : "false";
        }
        shipped.insert("| `" + key + "` | " + value + " |");
    }
    expectSame(file, shippedKeys, keys);
    const std::string page = "docs/settings.md";
    Names told;
    for (const Cells& row : rowsOf(page, "Settings", "Setting")) {
        ASSERT_GE(row.size(), 2U);
        told.insert("| `" + codeOf(row[0]).at(0) + "` | " + row[1] + " |");
    }
    expectSame(page, told, shipped);
}

TEST_F(PagesTest, DictionariesOfSettings) {
    Names keys;
    Names options;
    for (const Setting& setting : settingsTable()) {
        if (setting.key != nullptr) keys.insert(std::string(setting.key) + " ");
    }
    for (const ModernOption& row : modernOptions()) options.insert(row.option.nameToSet());
    Names keysTold = entriesOf("fuzz/settings.dict");
    std::erase_if(keysTold, [](const std::string& entry) { return !entry.ends_with(": "); });
    expectSame("fuzz/settings.dict", keysTold, keys);

    // The entries that start with a capital; moves do not
    Names optionsTold = entriesOf("fuzz/uci.dict");
    std::erase_if(optionsTold, [](const std::string& entry) {
        if (entry.starts_with("UCI_")) return false;
        return entry.size() < 2 || std::isupper(static_cast<unsigned char>(entry[0])) == 0 ||
               std::islower(static_cast<unsigned char>(entry[1])) == 0;
    });
    expectSame("fuzz/uci.dict", optionsTold, options);
}

void add(const std::vector<std::string_view>& words, Names& names) {
    names.insert(words.begin(), words.end());
}

Names uciWords() {
    Names words{"startpos", "fen", "moves"};  // of "position"
    add(UciHandler::commands(true), words);
    add(UciHandler::commands(false), words);
    add(UciHandler::goWords(), words);
    return words;
}

/// The words of all commands in the first column of a section, without placeholders for values.
Names commandsTold(const std::string& section) {
    Names told;
    for (const Cells& row : rowsOf("docs/protocols.md", section, "Command")) {
        for (const std::string& line : codeOf(row[0])) {
            std::istringstream words(line);
            for (std::string word; words >> word;) {
                if (std::isupper(static_cast<unsigned char>(word[0])) == 0) told.insert(word);
            }
        }
    }
    return told;
}

TEST_F(PagesTest, Commands) {
    Names startWords;
    add(ExtraHandler::commands(), startWords);
    expectSame("docs/protocols.md, The start,", commandsTold("The start"), startWords);
    expectSame("docs/protocols.md, UCI,", commandsTold("UCI"), uciWords());
}

/// What only modern handlers understand is told; some rows are about plain commands.
TEST_F(PagesTest, ModernCommands) {
    Names words;
    add(ModernUciHandler::commands(true), words);
    add(ModernUciHandler::commands(false), words);
    add(modernGoWords(), words);
    for (const std::string& word : uciWords()) words.erase(word);
    words.insert("go");
    expectSame("docs/protocols.md, Modern UCI,", commandsTold("Modern UCI"), words);
}

constexpr std::pair<SearchMode, const char*> Modes[] = {{SearchMode::Idle, "idle"},
                                                        {SearchMode::Thinking, "thinking"},
                                                        {SearchMode::Pondering, "pondering"},
                                                        {SearchMode::Analysing, "analysing"}};

TEST_F(PagesTest, WhenCommandsAreUnderstood) {
    std::map<std::string, Names> understood;
    for (const auto& [mode, name] : Modes) add(WinBoardHandler::commands(mode), understood[name]);
    std::map<std::string, Names> told;
    for (const Cells& row : rowsOf("docs/protocols.md", "WinBoard", "Command")) {
        ASSERT_EQ(row.size(), 3U) << row[0];
        for (const std::string& line : codeOf(row[0])) {
            std::istringstream modes(row[2]);
            for (std::string mode; std::getline(modes >> std::ws, mode, ',');) {
                told[mode].insert(line.substr(0, line.find(' ')));
            }
        }
    }
    for (const auto& [mode, name] : Modes) {
        expectSame("docs/protocols.md, WinBoard, " + std::string(name) + ",", told[name],
                   understood[name]);
        told.erase(name);
    }
    EXPECT_TRUE(told.empty()) << "no such mode: " << told.begin()->first;
}

TEST_F(PagesTest, ModernWinBoardCommands) {
    Names words;
    for (const auto& [mode, name] : Modes) {
        add(ModernWinBoardHandler::furtherCommands(mode), words);
    }
    words.insert({"force", "protover"});
    Names told;
    for (const Cells& row : rowsOf("docs/protocols.md", "Modern WinBoard", "Command")) {
        for (const std::string& line : codeOf(row[0])) told.insert(line.substr(0, line.find(' ')));
    }
    expectSame("docs/protocols.md, Modern WinBoard,", told, words);
}

TEST_F(PagesTest, DictionariesOfCommands) {
    Names winBoardWords;
    for (const auto& [mode, name] : Modes) add(WinBoardHandler::commands(mode), winBoardWords);
    for (const auto& [file, words] :
         {std::pair{"fuzz/uci.dict", uciWords()}, std::pair{"fuzz/winboard.dict", winBoardWords}}) {
        Names told;
        for (const std::string& entry : entriesOf(file)) {
            std::istringstream parts(entry);
            for (std::string word; parts >> word;) told.insert(word);
        }
        for (const std::string& word : words) {
            EXPECT_TRUE(told.contains(word)) << file << " lacks " << word;
        }
    }
}

}  // namespace
}  // namespace brivok
