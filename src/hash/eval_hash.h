#pragma once

#include <cstdint>

#include "hash/record_table.h"

namespace brivok {

struct EvalHashRecord {
    static constexpr std::uint32_t CountedBytes = 16;

    std::uint64_t key;   ///< `hashKey` of the position; 0 in a cleared table
    std::int16_t score;  ///< centipawns, from the side to move
};

/// One score per position, keyed by `hashKey`.
class EvalHashTable : public RecordTable<EvalHashRecord> {
public:
    /// Replaces the table by an empty one of the size in `EHashMB`. Ends the program with code 1 if
    /// memory is refused.
    void Allocate();
};

extern EvalHashTable evalHashTable;

}  // namespace brivok
