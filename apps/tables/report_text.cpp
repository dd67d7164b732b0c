#include "report_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <vector>

namespace brivok::tables {
namespace {

std::string fixed(double value, int decimals) {
    const double scale = std::pow(10, decimals);
    const auto scaled = std::llround(value * scale);
    std::string digits = std::to_string(scaled);
    if (decimals == 0) return digits;
    const auto places = static_cast<std::size_t>(decimals);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    return digits.insert(digits.size() - places, 1, '.');
}

/// Three digits, or as many as stand before the point.
std::string threeDigits(double value) {
    return fixed(value, value < 9.995 ? 2 : value < 99.95 ? 1 : 0);
}

std::string_view nameOf(char letter) {
    switch (letter) {
        case 'q': return "queen";
        case 'r': return "rook";
        case 'b': return "bishop";
        case 'n': return "knight";
        default: return "pawn";
    }
}

std::string menOfSide(std::string_view letters) {
    std::vector<std::string> groups = {"king"};
    for (std::size_t i = 1; i < letters.size();) {
        const auto end = std::min(letters.find_first_not_of(letters[i], i), letters.size());
        const std::string name(nameOf(letters[i]));
        groups.push_back(end - i == 1 ? name : numberWord(end - i) + " " + name + "s");
        i = end;
    }
    std::string text = groups.front();
    for (std::size_t i = 1; i < groups.size(); ++i) {
        text += (i + 1 == groups.size() ? " and " : ", ") + groups[i];
    }
    return text;
}

}  // namespace

std::string grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t place = digits.size(); place > 3;) digits.insert(place -= 3, 1, ',');
    return digits;
}

std::string shareOf(std::uint64_t part, std::uint64_t whole) {
    if (whole == 0) return "0.0 %";
    const double share = 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    if (part != 0 && share < 0.05) return "< 0.1 %";
    if (part != whole && share >= 99.95) return "> 99.9 %";
    return fixed(share, 1) + " %";
}

std::string sizeText(std::uint64_t bytes) {
    constexpr std::array<std::string_view, 4> Units = {" kB", " MB", " GB", " TB"};
    double size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    while (size >= 999.5 && unit + 1 < Units.size()) {
        size /= 1000;
        ++unit;
    }
    return threeDigits(size) + std::string(Units[unit]);
}

std::string secondsText(double seconds) { return threeDigits(seconds); }

std::string durationText(double seconds) {
    if (seconds < 120) return fixed(seconds, 0) + " s";
    const auto minutes = static_cast<std::uint64_t>(std::llround(seconds / 60));
    if (minutes < 120) return std::to_string(minutes) + " min";
    return std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

std::string numberWord(std::size_t number) {
    constexpr std::array Words = {"no",  "one",   "two",   "three", "four", "five",
                                  "six", "seven", "eight", "nine",  "ten"};
    return number < Words.size() ? Words[number] : std::to_string(number);
}

std::string capitalized(std::string text) {
    if (!text.empty()) {
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    }
    return text;
}

std::string menText(std::string_view signature) {
    const std::size_t second = signature.find('k', 1);
    return menOfSide(signature.substr(0, second)) + " against " +
           menOfSide(signature.substr(second));
}

std::string countText(std::uint64_t number, std::string_view noun) {
    return grouped(number) + " " + std::string(noun) + (number == 1 ? "" : "s");
}

}  // namespace brivok::tables
