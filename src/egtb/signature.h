#pragma once

#include <string_view>

#include "egtb/piece_list.h"

namespace brivok {

/// The men that the signature of a table names, such as "krbkn": a king and the men of the first
/// side, then those of the second.
[[nodiscard]] PieceCounts countsOf(std::string_view signature);

/// The same men with the sides exchanged.
[[nodiscard]] PieceCounts withSidesSwapped(PieceCounts counts);

}  // namespace brivok
