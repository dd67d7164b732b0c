#include "shell/base/words.h"

#include <algorithm>
#include <cctype>

namespace brivok {

std::vector<std::string> SplitWords(std::string_view line) {
    // Counts one word per space that ends one, plus one after the last space: a line that ends in a
    // space and a newline has an empty last word.
    std::size_t count = 0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == ' ' && line[i - 1] != ' ') ++count;
    }
    if (!line.empty() && line.back() != ' ') ++count;

    std::vector<std::string> words;
    words.reserve(count);
    std::size_t at = 0;
    while (words.size() < count) {
        while (at < line.size() && line[at] == ' ') ++at;
        const std::size_t end = std::min(line.find_first_of(" \n", at), line.size());
        words.emplace_back(line.substr(at, end - at));
        at = end;
    }
    return words;
}

std::int64_t parseInteger(std::string_view text) {
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        value = std::min(value * 10 + (c - '0'), HugeNumber);
    }
    return negative ? -value : value;
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace brivok
