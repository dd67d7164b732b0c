#pragma once

#include <filesystem>
#include <string>

namespace brivok::tables {

/// Lines on a table file, plain or packed: its name and side, how many entries are what, and the
/// longest mates with a position of each. Throws AppError.
[[nodiscard]] std::string tableInfo(const std::filesystem::path& path);

}  // namespace brivok::tables
