#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "table_store.h"

namespace brivok::tables {

/// Compares every entry of a table with what its successors imply: see full_check.h and
/// entry_check.h. Returns a line on the first contradiction, with its position. Throws AppError if
/// a file is missing or unreadable.
[[nodiscard]] std::optional<std::string> contradiction(int id, TableStore& store, unsigned threads);

/// The same for `samples` random entries of each file, using the engine's moves: slower, and
/// independent of the generator. The sample is the same each time.
[[nodiscard]] std::optional<std::string> contradictionInSample(int id, TableStore& store,
                                                               std::uint64_t samples);

}  // namespace brivok::tables
