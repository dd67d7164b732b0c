#pragma once

#include <cstdint>

#include "hash/record_table.h"

namespace brivok {

/// The finished evaluation of a position.
struct EvalHashRecord {
    std::uint64_t key;   ///< `hashKey` of the position; 0 in a fresh table
    std::int16_t score;  ///< centipawns, from the side to move
};
static_assert(sizeof(EvalHashRecord) == 16);

/// One score per position, keyed by `hashKey`.
class EvalHashTable : public RecordTable<EvalHashRecord> {
public:
    /// Makes the table anew, empty, by the setting `EHashMB`. Ends the program with code 1 when
    /// the memory is refused.
    void Allocate();
};

/// The one of the engine.
extern EvalHashTable evalHashTable;

}  // namespace brivok
