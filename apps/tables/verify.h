#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "table_store.h"

namespace brivok::tables {

/// Compares every entry of a table with what its successors say, by the moves of the generator.
/// Returns a line on the first entry that contradicts them, with its position. Throws AppError
/// when a file is missing or unreadable.
[[nodiscard]] std::optional<std::string> contradiction(int id, TableStore& store, unsigned threads);

/// The same for so many entries of each file, taken at random, by the moves of the engine: slower,
/// and independent of the generator. The same entries are taken each time.
[[nodiscard]] std::optional<std::string> contradictionInSample(int id, TableStore& store,
                                                               std::uint64_t samples);

}  // namespace brivok::tables
