#include <algorithm>
#include <iterator>

#include "eval/evaluate.h"
#include "eval/terms.h"

namespace brivok {

namespace {

/// Rows that stand in for the rearmost pawn of a file without one: as if it had run to the end.
constexpr std::uint8_t NoWhitePawnRow = 1;
constexpr std::uint8_t NoBlackPawnRow = 6;

template <Side S>
void CollectFiles(Bitboard pawns, PawnHashRecord& record) {
    while (pawns != 0) {
        const Square sq = takeNext<S>(pawns);
        const int file = fileOf(sq) + 1;
        ++PawnsOnFile<S>(record)[file];
        PawnCover<S>(record) |= pawnAttacks<S>(sq);
        std::uint8_t& rear = RearRow<S>(record)[file];
        if (SeenRow<S>(rowOf(sq)) > SeenRow<S>(rear)) rear = static_cast<std::uint8_t>(rowOf(sq));
    }
}

template <Side S>
[[nodiscard]] int ScorePawn(const PawnHashRecord& record, Square sq) {
    const auto& own = PawnsOnFile<S>(record);
    const int file = fileOf(sq) + 1;
    const int row = SeenRow<S>(rowOf(sq));
    const int placed = weights::pawnTable[Seen<S>(sq)];
    const bool openFile = PawnsOnFile<opposite(S)>(record)[file] == 0;
    int score = placed;

    // Backward: behind all own pawns of the neighbouring files; isolated if there are none. A pawn
    // on the seventh rank is level with the row of an empty file, so it is neither.
    const auto ownRear = [&record](int f) { return SeenRow<S>(RearRow<S>(record)[f]); };
    const bool backward = ownRear(file - 1) < row && ownRear(file + 1) < row;
    const bool isolated = backward && own[file - 1] == 0 && own[file + 1] == 0;
    if (backward) score -= weights::BackwardPawn + (openFile ? weights::BackwardOnOpenFile : 0);
    if (isolated) score -= weights::IsolatedPawn + (openFile ? weights::IsolatedOnOpenFile : 0);

    score -= weights::DoubledPawn * (own[file] - 1);

    // Enemy pawns level with a passed pawn do not stop it.
    const auto enemyRear = [&record](int f) { return SeenRow<S>(RearRow<opposite(S)>(record)[f]); };
    if (openFile && row <= enemyRear(file - 1) && row <= enemyRear(file + 1)) {
        score += weights::PassedTableFactor * placed;
        if (!isolated) score += weights::PassedNotIsolated;
    }
    return score;
}

template <Side S>
[[nodiscard]] int ScorePawns(Bitboard pawns, const PawnHashRecord& record) {
    int score = 0;
    while (pawns != 0) score += ScorePawn<S>(record, takeNext<S>(pawns));
    return score;
}

}  // namespace

void EvaluatePawns(const Board& board, PawnHashRecord& record) {
    record = PawnHashRecord{};
    record.key = board.pawnKey;
    std::fill(std::begin(record.whiteRearRow), std::end(record.whiteRearRow), NoWhitePawnRow);
    std::fill(std::begin(record.blackRearRow), std::end(record.blackRearRow), NoBlackPawnRow);

    const Bitboard whitePawns = board.pieces[WhitePawn];
    const Bitboard blackPawns = board.pieces[BlackPawn];
    CollectFiles<White>(whitePawns, record);
    CollectFiles<Black>(blackPawns, record);
    record.score = static_cast<std::int16_t>(ScorePawns<White>(whitePawns, record) -
                                             ScorePawns<Black>(blackPawns, record));
}

}  // namespace brivok
