#pragma once

#include <cstdint>

#include "board/bitboard.h"
#include "hash/record_table.h"

namespace brivok {

/// What the evaluation knows about a pawn structure, in one cache line. A record of zeros, which a
/// cleared table holds for the key 0, says that there are no pawns. Pairs put White first.
struct alignas(64) PawnHashRecord {
    /// Bytes that a record counts for in the size of the table.
    static constexpr std::uint32_t CountedBytes = 72;

    std::uint64_t key;        ///< `pawnKey` of the position
    Bitboard cover[2];        ///< squares that the side's pawns attack
    Bitboard reach[2];        ///< squares that they attack now or once they have advanced
    std::int16_t score;       ///< centipawns, from White's view
    std::int16_t shelter;     ///< of the kings named in `kings`: White's KingShelter() less Black's
    std::uint16_t kings;      ///< the squares of both kings, see KingPair(); 0 if none are kept
    std::uint8_t files[2];    ///< a bit per file that holds one of the side's pawns
    std::uint8_t onDark[2];   ///< number of the side's pawns on dark squares
    std::uint8_t onLight[2];  ///< number of the side's pawns on light squares
    /// Row that stands in for the rearmost pawn of a file without one: as if it had run to the last
    /// row but one. A record of zeros names row 0 for both sides.
    std::uint8_t rowOfNone[2];
};
static_assert(sizeof(PawnHashRecord) == 64);

/// One record per pawn structure, keyed by `pawnKey`.
class PawnHashTable : public RecordTable<PawnHashRecord> {
public:
    /// Replaces the table by an empty one of the size in `PHashMB`. Ends the program with code 1 if
    /// memory is refused.
    void Allocate();
};

extern PawnHashTable pawnHashTable;

}  // namespace brivok
