#pragma once

#include "egtb/piece_list.h"

namespace brivok {

/// From the men of a position to its table: only tables of which a file has been found once are
/// known here, and none is ever forgotten.

/// The id of the table for these men, negative when the first side of its signature is Black; 0
/// when no file of such a table has been found, or none can exist.
[[nodiscard]] int TableIdFromCounts(const PieceCounts& counts);

/// Makes the table known by the men of its signature, with either colour as its first side.
void addToMaterialLookup(int id);

}  // namespace brivok
