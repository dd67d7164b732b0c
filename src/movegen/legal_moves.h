#pragma once

#include "movegen/generate.h"

namespace brivok {

/// The evasions of a side in check, else all pseudo-legal moves. Returns whether it is in check.
bool generateForPosition(Board& board, Move* list);

/// Whether the move of the list leaves the mover's own king unattacked. Makes and unmakes it.
[[nodiscard]] bool leavesKingSafe(Board& board, Move move);

/// The Move is in the list of the position and legal; false for 0.
[[nodiscard]] bool isLegalMove(Board& board, Move move);

/// The number of legal moves of the position.
[[nodiscard]] int countLegalMoves(Board& board);

/// Number of legal moves among the first `count` of the list. `lastLegal` gets the index of the
/// last legal one and is left alone if there is none.
[[nodiscard]] int countLegalInList(Board& board, const Move* moves, int count, int& lastLegal);

}  // namespace brivok
