#include "hash/table_report.h"

#include "shell/base/report.h"

namespace brivok {

void reportAllocation(const TableNames& names, std::uint64_t entries, std::uint64_t bytes) {
    Note("Allocated %u %s entries = %u bytes\n", static_cast<unsigned>(entries), names.entries,
         static_cast<unsigned>(bytes));
}

void endForRefusedMemory(const TableNames& names) {
    Note("Problem creating %s hash table!\n", names.table);
    ExitProgram(1);
}

}  // namespace brivok
