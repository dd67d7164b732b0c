#pragma once

#include <string>
#include <vector>

namespace brivok::tables {

/// The ids of the tables that the targets name, in the order of the targets. Targets are signatures
/// of up to six men, without pawns if there are six, "3men", "4men", "5men", and "all4" and "all5" for all of up to so many.
/// Throws AppError for anything else.
[[nodiscard]] std::vector<int> tablesNamed(const std::vector<std::string>& targets);

/// The same with the tables that they depend on, each after all that it depends on.
[[nodiscard]] std::vector<int> tablesToMake(const std::vector<std::string>& targets);

}  // namespace brivok::tables
