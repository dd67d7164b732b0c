#include "harmless.h"

#include <algorithm>
#include <vector>

#include "shell/base/words.h"

namespace brivok::fuzz {

namespace {

std::string harmlessLine(std::string line) {
    const std::vector<std::string> words = SplitWords(line);
    if (!words.empty() && words[0] == "perft") return "perft 1";
    // Some readers take names in any case.
    const std::string lower = lowerCase(line);
    if (lower.find("hash") != lower.npos || lower.find("memory") != lower.npos) {
        const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
        const auto both = [&](char a, char b) { return isDigit(a) && isDigit(b); };
        line.erase(std::unique(line.begin(), line.end(), both), line.end());
    }
    for (const char* const key : {"nalimovpath", "egtpath", "folder", "file", "dir"}) {
        if (lower.find(key) == lower.npos) continue;
        for (const char c : {'/', ',', ';'}) std::replace(line.begin(), line.end(), c, '_');
    }
    return line;
}

}  // namespace

std::string harmless(std::string_view lines) {
    std::string all;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        all += harmlessLine(std::string(lines.substr(0, end))) + '\n';
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return all;
}

}  // namespace brivok::fuzz
