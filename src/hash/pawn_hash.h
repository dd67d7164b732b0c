#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "hash/record_table.h"

namespace brivok {

/// What the evaluation knows about a pawn structure. Arrays are indexed by file + 1; entries 0 and
/// 9 are sentinels beside the a- and h-file and keep their reset values.
struct PawnHashRecord {
    static constexpr std::uint32_t CountedBytes = 72;

    std::uint64_t key;   ///< `pawnKey` of the position
    std::int16_t score;  ///< centipawns, from White's view
    std::uint8_t blackPawnsOnFile[10];
    std::uint8_t whitePawnsOnFile[10];
    std::uint8_t whiteRearRow[10];  ///< row of the rearmost white pawn; 1 if there is none
    std::uint8_t blackRearRow[10];  ///< row of the rearmost black pawn; 6 if there is none
    Bitboard whitePawnCover;
    Bitboard blackPawnCover;
};

/// One record per pawn structure, keyed by `pawnKey`.
class PawnHashTable : public RecordTable<PawnHashRecord> {
public:
    /// Replaces the table by an empty one of the size in `PHashMB`. Ends the program with code 1 if
    /// memory is refused.
    void Allocate();
};

extern PawnHashTable pawnHashTable;

}  // namespace brivok
