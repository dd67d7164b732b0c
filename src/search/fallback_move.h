#pragma once

#include <span>

#include "board/board.h"
#include "hash/transposition_table.h"

namespace brivok {

/// A move for a search that was stopped before it had one: the move in the transposition table if
/// it is legal, else the first legal move; NoMove if there is none. With `searchMoves`, only these
/// are considered.
[[nodiscard]] Move fallbackMove(Board& board, const TranspositionTable& table,
                                std::span<const Move> searchMoves = {});

}  // namespace brivok
