#pragma once

#include <cstdint>

namespace brivok {

/// The words for a table in the messages of its allocation.
struct TableNames {
    const char* table;    ///< as in "evaluation hash table"
    const char* entries;  ///< as in "ehash entries"
};

/// Notes the size of a new table in the log.
void reportAllocation(const TableNames& names, std::uint64_t entries, std::uint64_t bytes);

/// Notes in the log that the memory of a table was refused, and ends the program with code 1:
/// without its tables the engine can do nothing.
[[noreturn]] void endForRefusedMemory(const TableNames& names);

}  // namespace brivok
