#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "hash/record_table.h"

namespace brivok {

/// All that the evaluation knows of a pawn structure. Arrays are indexed by file + 1; entries 0
/// and 9 are sentinel columns beside the a- and h-file and keep their reset values.
struct PawnHashRecord {
    std::uint64_t key;                  ///< `pawnKey` of the position
    std::int16_t score;                 ///< centipawns, from White's side
    std::uint8_t blackPawnsOnFile[10];  ///< how many
    std::uint8_t whitePawnsOnFile[10];  ///< how many
    std::uint8_t whiteRearRow[10];      ///< row of the white pawn furthest back; 1 without one
    std::uint8_t blackRearRow[10];      ///< row of the black pawn furthest back; 6 without one
    Bitboard whitePawnCover;            ///< squares attacked by white pawns
    Bitboard blackPawnCover;            ///< squares attacked by black pawns
};
static_assert(sizeof(PawnHashRecord) == 72);

/// One record per pawn structure, keyed by `pawnKey`.
class PawnHashTable : public RecordTable<PawnHashRecord> {
public:
    /// Makes the table anew, empty, by the setting `PHashMB`. Ends the program with code 1 when
    /// the memory is refused.
    void Allocate();
};

/// The one of the engine.
extern PawnHashTable pawnHashTable;

}  // namespace brivok
