#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "search/time_control.h"

/// @file
/// Times as WinBoard interfaces write them.
namespace brivok {

inline constexpr std::uint32_t CentisecondsPerSecond = 100;
inline constexpr std::uint32_t CentisecondsPerMinute = 6000;

/// The longest time that a word can stand for: half a year, in centiseconds.
inline constexpr std::uint32_t LongestTime = 1'600'000'000;

/// Centiseconds from "7", "0.25" or "1:30.5". A number without a colon counts in `unit`
/// centiseconds, one with a colon in minutes and seconds. Nothing for any other word and for a time
/// above LongestTime.
[[nodiscard]] std::optional<std::uint32_t> readTime(std::string_view word, std::uint32_t unit);

/// The number in a word of digits alone, if it is at most `most`.
[[nodiscard]] std::optional<std::uint32_t> readNumber(std::string_view word, std::uint32_t most);

/// The clocks at the start of the control "level MOVES BASE INCREMENT": moves to the next control,
/// or 0; minutes or minutes:seconds; seconds. Nothing if one of them is not understood.
[[nodiscard]] std::optional<TimeControl> readLevel(std::string_view moves, std::string_view base,
                                                   std::string_view increment);

}  // namespace brivok
