#pragma once

#include "board/board.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/search_stats.h"
#include "shell/base/settings.h"

namespace brivok {

/// What an evaluation uses besides the position; apart from this, only the piece values are read. A
/// search passes its own.
struct Evaluation {
    EvalHashTable& evalHash;
    PawnHashTable& pawnHash;
    SearchStats& stats;
    const Settings& settings;  ///< whether lazy evaluation is on

    /// Largest positional score, imbalance included, of any full evaluation in this search: the
    /// margin of the lazy exit, in centipawns. 0 when a search starts.
    int lazyMargin = 0;
};

/// With the tables of the engine.
inline Evaluation theEvaluation{evalHashTable, pawnHashTable, searchStats, settings};

/// The part of Evaluate() behind the evaluation hash: `record` is the slot that missed.
[[nodiscard]] int EvaluateAnew(const Board& board, Evaluation& with, EvalHashRecord& record,
                               int alpha, int beta);

/// Static score of the position in centipawns, from the side to move. `alpha` and `beta`, also from
/// the side to move, only serve the lazy exit: with lazy evaluation on, a result outside the window
/// is just a bound. Inline as far as the evaluation hash, which answers a third of the calls.
[[nodiscard]] inline int Evaluate(const Board& board, Evaluation& with, int alpha, int beta) {
    ++with.stats.evalHashProbes;
    EvalHashRecord& record = with.evalHash.Find(board.hashKey);
    if (record.key == board.hashKey) {
        ++with.stats.evalHashHits;
        return record.score;
    }
    return EvaluateAnew(board, with, record, alpha, beta);
}

/// Uses the tables of the engine.
[[nodiscard]] inline int Evaluate(const Board& board, int alpha, int beta) {
    return Evaluate(board, theEvaluation, alpha, beta);
}

/// Correction for trades that plain piece values misjudge, from White's view.
[[nodiscard]] int MaterialImbalance(const Board& board);

/// Fills the whole record from the pawns on the board.
void EvaluatePawns(const Board& board, PawnHashRecord& record);

}  // namespace brivok
