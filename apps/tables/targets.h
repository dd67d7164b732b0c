#pragma once

#include <string>
#include <vector>

namespace brivok::tables {

/// The ids of the tables that the targets name, in the order of the targets. A target is a
/// signature of up to six men, without pawns if there are six; or "3men", "4men" or "5men"; or
/// "all4" or "all5" for all tables of up to so many men. Throws AppError for anything else.
[[nodiscard]] std::vector<int> tablesNamed(const std::vector<std::string>& targets);

/// The same with the tables that they depend on, each after all that it depends on.
[[nodiscard]] std::vector<int> tablesToMake(const std::vector<std::string>& targets);

}  // namespace brivok::tables
