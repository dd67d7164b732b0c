#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

#include "runs.h"

namespace brivok {

/// Keeps the members in the order in which they are added.
using Json = nlohmann::ordered_json;

/// Prints one line a position and the totals.
void printRun(std::string_view title, const Run& run);

/// Prints the seconds until each depth, one column a position.
void printDepths(const Run& run);

/// The run as an object.
[[nodiscard]] Json jsonOf(const Run& run);

}  // namespace brivok
