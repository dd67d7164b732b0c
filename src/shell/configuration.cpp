#include "shell/configuration.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <sstream>

#include "shell/base/settings.h"
#include "shell/base/words.h"
#include "shell/settings_table.h"

namespace brivok {

namespace {

constexpr char FileName[] = "brivok.ini";

/// A line this long or longer ends the reading.
constexpr std::size_t LongestLine = 4096;

/// Calls `take` with the key and the value of each line of the file. Comments and section headings
/// need no special case: they do not match any key.
template <class Take>
void readFile(Take take) {
    std::ifstream file(FileName);
    // Room for the longest line accepted, its carriage return and the terminator.
    std::array<char, LongestLine + 1> room;
    while (file.getline(room.data(), room.size())) {
        std::string line = room.data();
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() >= LongestLine) return;
        std::istringstream words(line);
        std::string key;
        std::string value;
        if (words >> key >> value) take(key, value);
    }
}

}  // namespace

bool setKey(std::string_view key, const std::string& value) {
    for (const Setting& setting : settingsTable()) {
        if (setting.key == nullptr || key != setting.key) continue;
        setting.rule.fromFile(value);
        return true;
    }
    return false;
}

void ReadConfiguration() {
    readFile([](const std::string& key, const std::string& value) { (void)setKey(key, value); });
}

bool wantsModernInterface() {
    bool wanted = Settings{}.modernInterface;
    readFile([&wanted](const std::string& key, const std::string& value) {
        if (key == "ModernInterface:") wanted = lowerCase(value) == "true";
    });
    return wanted;
}

}  // namespace brivok
