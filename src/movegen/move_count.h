#pragma once

#include "movegen/legality.h"

namespace brivok {

/// Number of legal moves of a side that is not in check, from the sizes of the sets of targets. No
/// move is written or made. The legality is that of the position, and known().
[[nodiscard]] int countMoves(const Board& board, const Legality& legality);

}  // namespace brivok
