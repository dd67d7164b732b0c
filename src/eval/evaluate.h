#pragma once

#include "board/board.h"
#include "hash/pawn_hash.h"

namespace brivok {

/// Largest positional score, imbalance included, that a full evaluation of the present search has
/// shown: the margin of the lazy exit, in centipawns. A search starts with 0.
inline int lazyMargin = 0;

/// Static score of the position in centipawns, from the side to move. `alpha` and `beta`, in the
/// same sense, serve the lazy exit alone: with lazy evaluation on, a result outside the window is
/// only a bound. Reads and writes the evaluation and pawn hash tables and counts in searchStats.
[[nodiscard]] int Evaluate(const Board& board, int alpha, int beta);

/// Correction of trades that plain piece values misjudge, from White's side.
[[nodiscard]] int MaterialImbalance(const Board& board);

/// Fills the whole record from the pawns of the board, whatever it held.
void EvaluatePawns(const Board& board, PawnHashRecord& record);

}  // namespace brivok
