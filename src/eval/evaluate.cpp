#include "eval/evaluate.h"

#include <algorithm>
#include <cstdlib>

#include "eval/eval_weights.h"
#include "eval/terms.h"

namespace brivok {

namespace {

[[nodiscard]] bool IsEndgame(const Board& board) {
    return std::min(board.phaseCount[White], board.phaseCount[Black]) <= weights::EndgamePhase;
}

/// The pawn record, computed if the table does not have it. Without pawns (key 0) a cleared table
/// returns a zeroed record.
[[nodiscard]] PawnHashRecord& PawnRecord(const Board& board, Evaluation& with) {
    ++with.stats.pawnHashProbes;
    PawnHashRecord& record = with.pawnHash.Find(board.pawnKey);
    if (record.key == board.pawnKey) {
        ++with.stats.pawnHashHits;
    } else {
        ++with.stats.pawnHashStores;
        EvaluatePawns(board, record);
    }
    return record;
}

template <Side S>
[[nodiscard]] int Patterns(const Board& board, const PawnHashRecord& pawns) {
    return HeavyOnSeventh<S>(board) + TrappedBishop<S>(board) +
           BishopPairOrBadBishop<S>(board, pawns);
}

/// What the pawns mean for both kings, from White's view. A pawn structure outlives many moves of
/// the pieces, so its record keeps the value for the last pair of kings.
[[nodiscard]] int Shelters(const Board& board, PawnHashRecord& pawns) {
    const std::uint16_t kings = KingPair(board);
    if (pawns.kings != kings) {
        pawns.kings = kings;
        pawns.shelter = static_cast<std::int16_t>(KingShelter<White>(board, pawns) -
                                                  KingShelter<Black>(board, pawns));
    }
    return pawns.shelter;
}

template <Side S>
[[nodiscard]] int PiecesAndKing(const Board& board, const PawnHashRecord& pawns, bool endgame) {
    return Rooks<S>(board, pawns) + Bishops<S>(board, pawns) + Outposts<S>(board, pawns) +
           KingPlace<S>(board, endgame) + CastlingState<S>(board, pawns);
}

[[nodiscard]] int FromSideToMove(const Board& board, int score) {
    return board.sideToMove == White ? score : -score;
}

}  // namespace

int EvaluateAnew(const Board& board, Evaluation& with, EvalHashRecord& record, int alpha,
                 int beta) {
    SearchStats& stats = with.stats;

    // 1. Material, development, pawns and cheap patterns. From here on, scores are from White's
    // view.
    const int materialBalance = board.material[White] - board.material[Black];
    int score = materialBalance + MaterialImbalance(board);
    score += Development<White>(board) - Development<Black>(board);
    PawnHashRecord& pawns = PawnRecord(board, with);
    score += pawns.score;
    score += Patterns<White>(board, pawns) - Patterns<Black>(board, pawns);

    // 2. Lazy exit, if the score is far enough outside the window. Such a score is not stored.
    int& lazyMargin = with.lazyMargin;
    if (with.settings.lazyEvalEnabled) {
        const int partial = FromSideToMove(board, score);
        if (partial + lazyMargin < alpha) {
            ++stats.evalLazy;
            return partial + lazyMargin;
        }
        if (partial - lazyMargin > beta) {
            ++stats.evalLazy;
            return partial - lazyMargin;
        }
    }
    ++stats.evalFull;

    // 3. Pieces and kings
    const bool endgame = IsEndgame(board);
    score += board.placement;
    score += PiecesAndKing<White>(board, pawns, endgame);
    score -= PiecesAndKing<Black>(board, pawns, endgame);
    if (!endgame) score += Shelters(board, pawns);

    // 4. Update the margin and store the score, truncated to 16 bits.
    lazyMargin = std::max(lazyMargin, std::abs(materialBalance - score));
    const int result = FromSideToMove(board, score);
    ++stats.evalHashStores;
    record.key = board.hashKey;
    record.score = static_cast<std::int16_t>(result);
    return result;
}

}  // namespace brivok
