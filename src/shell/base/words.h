// Every folder above src/platform may include this.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brivok {

/// The words of a line, split at spaces alone: tabs stay inside words, several spaces count as
/// one. A space before the newline leaves an empty last word, and so does a bare newline; a line
/// without a newline and without a word gives none.
[[nodiscard]] std::vector<std::string> SplitWords(std::string_view line);

/// A decimal integer with an optional sign: leading digits count, the rest is dropped, and a text
/// without digits gives 0. Numbers beyond `HugeNumber` are cut to it, with their sign.
[[nodiscard]] std::int64_t parseInteger(std::string_view text);

/// The text with the letters A to Z in lower case.
[[nodiscard]] std::string lowerCase(std::string text);

/// Outside every range that the engine knows, and still so when cut to 16 bits.
inline constexpr std::int64_t HugeNumber = (std::int64_t{1} << 40) - (std::int64_t{1} << 15);

}  // namespace brivok
