// All folders above src/platform may include this.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brivok {

/// Splits a line at spaces only: tabs stay inside words, and several spaces count as one. A space
/// before the newline yields an empty last word, and so does a bare newline. A line with neither a
/// newline nor a word yields nothing.
[[nodiscard]] std::vector<std::string> SplitWords(std::string_view line);

/// Parses a decimal integer with an optional sign: reads the leading digits and ignores the rest; 0
/// without digits. Values beyond `HugeNumber` are clamped to it, keeping the sign.
[[nodiscard]] std::int64_t parseInteger(std::string_view text);

/// Only A to Z are converted.
[[nodiscard]] std::string lowerCase(std::string text);

/// Outside every valid range, even when truncated to 16 bits.
inline constexpr std::int64_t HugeNumber = (std::int64_t{1} << 40) - (std::int64_t{1} << 15);

}  // namespace brivok
