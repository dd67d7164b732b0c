#pragma once

#include <functional>
#include <string>

#include "table_store.h"

namespace brivok::tables {

/// Makes a table of up to five men; the tables it depends on must be in the store. `progress`
/// receives a few words on each step.
[[nodiscard]] TableBytes makeTable(int id, TableStore& store, unsigned threads,
                                   const std::function<void(const std::string&)>& progress);

}  // namespace brivok::tables
