#include "tools/position_file.h"

#include <array>
#include <filesystem>
#include <string_view>

#include "shell/base/console.h"

namespace brivok {

std::optional<std::string> Ask(Application& app, const char* question) {
    Print(app, "%s", question);
    std::string_view line;
    if (!ReadLine(app, line)) return std::nullopt;
    return std::string(line.substr(0, line.find('\n')));
}

PositionFile::PositionFile(const std::string& name) {
    // Some systems open a folder as an empty file.
    std::error_code unknown;
    if (!std::filesystem::is_directory(name, unknown)) file.open(name);
}

bool PositionFile::next(std::string& line) {
    std::array<char, MaxLineLength + 1> piece;
    file.getline(piece.data(), piece.size());
    if (file.fail()) {
        if (file.gcount() == 0) return false;
        file.clear();
        // A line that exactly fits may leave its line end unread.
        while (file.peek() == '\r') file.get();
        if (file.peek() == '\n') file.get();
        file.clear();
    }
    line = piece.data();
    while (line.ends_with('\r')) line.pop_back();
    return true;
}

}  // namespace brivok
