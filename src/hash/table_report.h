#pragma once

#include <cstdint>

namespace brivok {

/// How the allocation messages call a table.
struct TableNames {
    const char* table;    ///< as in "evaluation hash table"
    const char* entries;  ///< as in "ehash entries"
};

/// Logs the size of a new table.
void reportAllocation(const TableNames& names, std::uint64_t entries, std::uint64_t bytes);

/// Logs that memory for a table was refused and ends the program with code 1: the engine cannot
/// work without its tables.
[[noreturn]] void endForRefusedMemory(const TableNames& names);

}  // namespace brivok
