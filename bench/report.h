#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

#include "runs.h"

namespace brivok {

/// Keeps members in insertion order.
using Json = nlohmann::ordered_json;

/// Prints one line per position, then the totals.
void printRun(std::string_view title, const Run& run);

/// Prints the seconds to reach each depth, one column per position.
void printDepths(const Run& run);

[[nodiscard]] Json jsonOf(const Run& run);

}  // namespace brivok
