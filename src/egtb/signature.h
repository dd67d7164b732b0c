#pragma once

#include <string_view>

#include "egtb/piece_list.h"

namespace brivok {

/// The men in a table's signature, such as "krbkn": first side, then second side.
[[nodiscard]] PieceCounts countsOf(std::string_view signature);

[[nodiscard]] PieceCounts withSidesSwapped(PieceCounts counts);

}  // namespace brivok
