#pragma once

#include <filesystem>
#include <string>

namespace brivok::tables {

/// Describes a table file, plain or packed: its name and side, how many entries have each kind of
/// value, and the longest mates with a position for each. Throws AppError.
[[nodiscard]] std::string tableInfo(const std::filesystem::path& path);

}  // namespace brivok::tables
