#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "table_store.h"

namespace brivok::tables {

/// The ids of the tables that the targets name, each after all that it depends on. Targets are
/// signatures of up to five men, "3men", "4men" and "all4". Throws AppError for anything else.
[[nodiscard]] std::vector<int> tablesToMake(const std::vector<std::string>& targets);

/// Makes a table of up to five men; the tables it depends on must be in the store. `progress`
/// receives a few words on each step.
[[nodiscard]] TableBytes makeTable(int id, TableStore& store, unsigned threads,
                                   const std::function<void(const std::string&)>& progress);

}  // namespace brivok::tables
