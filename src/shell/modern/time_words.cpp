#include "shell/modern/time_words.h"

#include <algorithm>
#include <cctype>

namespace brivok {

namespace {

constexpr std::uint32_t MostMoves = 1'000'000;

bool isDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

/// The value of "12", "12.5" or ".5", times `unit`, rounded down to whole ones.
std::optional<std::uint32_t> readDecimal(std::string_view word, std::uint32_t unit) {
    const std::size_t point = std::min(word.find('.'), word.size());
    const std::string_view whole = word.substr(0, point);
    const std::string_view fraction = word.substr(std::min(point + 1, word.size()));
    if (whole.empty() && fraction.empty()) return std::nullopt;
    if (!std::ranges::all_of(fraction, isDigit)) return std::nullopt;
    const auto units = whole.empty() ? 0 : readNumber(whole, LongestTime / unit);
    if (!units) return std::nullopt;

    // Below a millionth of the unit nothing matters.
    constexpr std::size_t Digits = 6;
    std::uint64_t parts = 0;
    std::uint64_t scale = 1;
    for (const char c : fraction.substr(0, Digits)) {
        parts = parts * 10 + static_cast<std::uint64_t>(c - '0');
        scale *= 10;
    }
    return *units * unit + static_cast<std::uint32_t>(parts * unit / scale);
}

}  // namespace

std::optional<std::uint32_t> readNumber(std::string_view word, std::uint32_t most) {
    if (word.empty() || !std::ranges::all_of(word, isDigit)) return std::nullopt;
    std::uint64_t value = 0;
    for (const char c : word) {
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
        if (value > most) return std::nullopt;
    }
    return static_cast<std::uint32_t>(value);
}

std::optional<std::uint32_t> readTime(std::string_view word, std::uint32_t unit) {
    const std::size_t colon = word.find(':');
    if (colon == std::string_view::npos) return readDecimal(word, unit);
    const auto minutes = readNumber(word.substr(0, colon), LongestTime / CentisecondsPerMinute / 2);
    const auto rest = readDecimal(word.substr(colon + 1), CentisecondsPerSecond);
    if (!minutes || !rest || *rest >= CentisecondsPerMinute) return std::nullopt;
    return *minutes * CentisecondsPerMinute + *rest;
}

std::optional<TimeControl> readLevel(std::string_view moves, std::string_view base,
                                     std::string_view increment) {
    const auto session = readNumber(moves, MostMoves);
    const auto start = readTime(base, CentisecondsPerMinute);
    const auto added = readTime(increment, CentisecondsPerSecond);
    if (!session || !start || !added) return std::nullopt;

    TimeControl clock;
    clock.clockGiven = true;
    clock.kind = *session != 0 ? ClockKind::Conventional
                 : *added != 0 ? ClockKind::Increment
                               : ClockKind::SuddenDeath;
    clock.movesPerSession = *session;
    clock.ownTime = clock.oppTime = clock.ownStart = clock.oppStart = *start;
    clock.ownIncrement = clock.oppIncrement = *added;
    return clock;
}

}  // namespace brivok
