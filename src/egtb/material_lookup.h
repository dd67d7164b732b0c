#pragma once

#include "egtb/piece_list.h"

namespace brivok {

/// Maps the men of a position to a table. Knows only tables of which a file has been found, and
/// never forgets one.

/// The id of the table for these men, negative if the first side of its signature is Black; 0 if no
/// file of the table has been found or no such table exists.
[[nodiscard]] int TableIdFromCounts(const PieceCounts& counts);

/// Adds a table, with either colour as its first side.
void addToMaterialLookup(int id);

}  // namespace brivok
