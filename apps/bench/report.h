#pragma once

#include <string_view>

#include "json_writer.h"
#include "runs.h"

namespace brivok {

/// Prints one line a position and the totals.
void printRun(std::string_view title, const Run& run);

/// Prints the seconds until each depth, one column a position.
void printDepths(const Run& run);

/// Writes the run as an object.
void writeRun(JsonWriter& json, const Run& run);

}  // namespace brivok
