#pragma once

#include <filesystem>
#include <string>

namespace brivok::tables {

/// Describes a table file, plain or packed: its name and side, how many entries have each kind of
/// value, the longest mates with a position for each, and what its checksums tell. Throws AppError,
/// also if the file is damaged.
[[nodiscard]] std::string tableInfo(const std::filesystem::path& path);

}  // namespace brivok::tables
