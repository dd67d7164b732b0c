#pragma once

#include "board/board.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/search_stats.h"
#include "shell/base/settings.h"

namespace brivok {

/// What an evaluation works with beside the position. A search hands its own; nothing else is read
/// or written but the piece values.
struct Evaluation {
    EvalHashTable& evalHash;   ///< finished scores
    PawnHashTable& pawnHash;   ///< pawn structures
    SearchStats& stats;        ///< counts the work
    const Settings& settings;  ///< lazy evaluation or not

    /// Largest positional score, imbalance included, that a full evaluation of the present search
    /// has shown: the margin of the lazy exit, in centipawns. A search starts with 0.
    int lazyMargin = 0;
};

/// The one of the engine, with its tables.
inline Evaluation theEvaluation{evalHashTable, pawnHashTable, searchStats, settings};

/// Static score of the position in centipawns, from the side to move. `alpha` and `beta`, in the
/// same sense, serve the lazy exit alone: with lazy evaluation on, a result outside the window is
/// only a bound.
[[nodiscard]] int Evaluate(const Board& board, Evaluation& with, int alpha, int beta);

/// The same with the engine's own tables.
[[nodiscard]] inline int Evaluate(const Board& board, int alpha, int beta) {
    return Evaluate(board, theEvaluation, alpha, beta);
}

/// Correction of trades that plain piece values misjudge, from White's side.
[[nodiscard]] int MaterialImbalance(const Board& board);

/// Fills the whole record from the pawns of the board, whatever it held.
void EvaluatePawns(const Board& board, PawnHashRecord& record);

}  // namespace brivok
