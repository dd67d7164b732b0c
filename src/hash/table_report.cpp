#include "hash/table_report.h"

#include "shell/base/console.h"

namespace brivok {

void reportAllocation(const TableNames& names, std::uint64_t entries, std::uint64_t bytes) {
    if (theApplication == nullptr) return;
    LogOnly(*theApplication, "Allocated %u %s entries = %u bytes\n", static_cast<unsigned>(entries),
            names.entries, static_cast<unsigned>(bytes));
}

void endForRefusedMemory(const TableNames& names) {
    if (theApplication != nullptr) {
        LogOnly(*theApplication, "Problem creating %s hash table!\n", names.table);
    }
    ExitProgram(1);
}

}  // namespace brivok
