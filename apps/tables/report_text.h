#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Numbers, amounts and names as people read them.
namespace brivok::tables {

/// "1,234,567".
[[nodiscard]] std::string grouped(std::uint64_t number);

/// Per cent with one decimal, such as "12.3 %". Only nothing is "0.0 %" and only all is "100.0 %".
[[nodiscard]] std::string shareOf(std::uint64_t part, std::uint64_t whole);

/// "28.6 kB", "1.75 MB", "30.6 GB".
[[nodiscard]] std::string sizeText(std::uint64_t bytes);

/// "0.03", "1.2", "47".
[[nodiscard]] std::string secondsText(double seconds);

/// "47 s", "12 min", "4 h 10 min".
[[nodiscard]] std::string durationText(double seconds);

/// "two" for 2, up to ten.
[[nodiscard]] std::string numberWord(std::size_t number);

[[nodiscard]] std::string capitalized(std::string text);

/// "king, rook and bishop against king and two pawns".
[[nodiscard]] std::string menText(std::string_view signature);

/// "1 table", "2 tables".
[[nodiscard]] std::string countText(std::uint64_t number, std::string_view noun);

}  // namespace brivok::tables
