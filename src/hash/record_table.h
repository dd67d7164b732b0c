#pragma once

#include <cstdint>

#include "hash/table_report.h"
#include "hash/zeroed_array.h"

namespace brivok {

/// Number of records in a table of `megabytes` if each counts for `recordSize` bytes: the smallest
/// power of two, at least 2, whose bytes exceed half the setting; 1 if not even one record fits
/// into that half.
[[nodiscard]] constexpr std::uint64_t recordCountFor(std::uint32_t megabytes,
                                                     std::uint32_t recordSize) {
    const std::uint64_t limit = std::uint64_t{megabytes} << 19U;
    std::uint64_t count = 1;
    if (limit >= recordSize) {
        do {
            count *= 2;
        } while (count * recordSize <= limit);
    }
    return count;
}

/// A table with one record per slot; a new record always replaces the old one. A key's slot is its
/// low 32 bits modulo one less than the number of records, so that number decides which keys share
/// a slot, and with it the tree of a search. A record therefore declares as `CountedBytes` what it
/// counts for when a table is sized and reported, whatever its layout occupies.
template <class Record>
class RecordTable {
public:
    /// The key's slot, whatever it holds: the caller compares the key.
    [[nodiscard]] Record& Find(std::uint64_t key) { return records[slotOf(key)]; }

    void prefetch(std::uint64_t key) const { __builtin_prefetch(&records[slotOf(key)]); }

    void Clear() { records.clear(); }

    /// 0 before the first allocation.
    [[nodiscard]] std::uint32_t size() const { return count; }

protected:
    /// Replaces the array by an empty one for `megabytes`. Ends the program with code 1 if memory
    /// is refused.
    void reallocate(std::uint32_t megabytes, const TableNames& names) {
        const std::uint64_t newCount = recordCountFor(megabytes, Record::CountedBytes);
        if (newCount < 2 || newCount > MaxRecords || !records.allocate(newCount)) {
            endForRefusedMemory(names);
        }
        count = static_cast<std::uint32_t>(newCount);
        reciprocal = ~std::uint64_t{0} / (count - 1) + 1;
        reportAllocation(names, count, newCount * Record::CountedBytes);
    }

private:
    static constexpr std::uint64_t MaxRecords = std::uint64_t{1} << 31U;

    /// key % (count - 1), by multiplication with the precomputed reciprocal (Lemire, Kaser and
    /// Kurz, "Faster remainder by direct computation", 2019); exact for 32-bit operands.
    [[nodiscard]] std::uint32_t slotOf(std::uint64_t key) const {
        __extension__ using Wide = unsigned __int128;
        const std::uint64_t fraction = reciprocal * static_cast<std::uint32_t>(key);
        return static_cast<std::uint32_t>((static_cast<Wide>(fraction) * (count - 1)) >> 64U);
    }

    ZeroedArray<Record> records;
    std::uint32_t count = 0;
    std::uint64_t reciprocal = 0;
};

}  // namespace brivok
