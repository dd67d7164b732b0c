#include "eval/evaluate.h"
#include "eval/terms.h"

namespace brivok {

namespace {

/// Rows that stand in for the rearmost pawn of a file without one, by side, White first.
constexpr std::uint8_t RowOfNone[2] = {1, 6};

/// The set and everything in front of it on its files, as S sees the board.
template <Side S>
[[nodiscard]] constexpr Bitboard FilledAhead(Bitboard set) {
    for (const unsigned rows : {8U, 16U, 32U}) set |= S == White ? set >> rows : set << rows;
    return set;
}

/// A bit per file that the set touches.
[[nodiscard]] constexpr std::uint8_t FilesOf(Bitboard set) {
    for (const unsigned rows : {32U, 16U, 8U}) set |= set >> rows;
    return static_cast<std::uint8_t>(set);
}

/// All squares of the files that the set touches.
[[nodiscard]] constexpr Bitboard WholeFiles(Bitboard set) { return FileA * FilesOf(set); }

/// Sum of the pawn table over a set of pawns of S.
template <Side S>
[[nodiscard]] int Placed(Bitboard pawns) {
    int sum = 0;
    while (pawns != 0) sum += weights::pawnTable[Seen<S>(takeNext<White>(pawns))];
    return sum;
}

/// Number of pairs of a pawn and another one on its file, each pair counted from both sides.
[[nodiscard]] int DoubledPairs(Bitboard own) {
    if (popCount(own) == popCount(FilesOf(own))) return 0;
    int pairs = 0;
    for (const Bitboard file : fileMask.sets) {
        const int count = popCount(own & file);
        pairs += count * (count - 1);
    }
    return pairs;
}

/// The score of all pawns of S. `enemyReach` is PawnHashRecord::reach of the enemy.
template <Side S>
[[nodiscard]] int ScorePawns(Bitboard own, Bitboard enemy, Bitboard enemyReach) {
    constexpr Bitboard FirstRow = rowMask[SeenRow<S>(7)];
    constexpr Bitboard LastTwoRows = rowMask[SeenRow<S>(0)] | rowMask[SeenRow<S>(1)];

    // Backward: behind all own pawns of the neighbouring files; isolated if there are none. A file
    // without a pawn counts as if one stood on the seventh rank, so a pawn there is neither.
    const Bitboard openFile = own & ~WholeFiles(enemy);
    const Bitboard backward = own & ~LastTwoRows & ~besides(FilledAhead<S>(own));
    const Bitboard isolated = backward & ~besides(WholeFiles(own));
    // Enemy pawns level with a passed pawn do not stop it.
    const Bitboard passed = openFile & ~FirstRow & ~enemyReach;

    return Placed<S>(own) + weights::PassedTableFactor * Placed<S>(passed) +
           weights::PassedNotIsolated * popCount(passed & ~isolated) -
           weights::BackwardPawn * popCount(backward) -
           weights::BackwardOnOpenFile * popCount(backward & openFile) -
           weights::IsolatedPawn * popCount(isolated) -
           weights::IsolatedOnOpenFile * popCount(isolated & openFile) -
           weights::DoubledPawn * DoubledPairs(own);
}

/// Fills the sets and counts of one side.
template <Side S>
void FillSide(Bitboard own, PawnHashRecord& record) {
    constexpr unsigned us = whiteFirst(S);
    record.cover[us] = pawnCover<S>(own);
    record.reach[us] = FilledAhead<S>(record.cover[us]);
    record.files[us] = FilesOf(own);
    record.onDark[us] = static_cast<std::uint8_t>(popCount(own & darkSquares));
    record.onLight[us] = static_cast<std::uint8_t>(popCount(own & lightSquares));
    record.rowOfNone[us] = RowOfNone[us];
}

}  // namespace

void EvaluatePawns(const Board& board, PawnHashRecord& record) {
    const Bitboard white = board.pieces[WhitePawn];
    const Bitboard black = board.pieces[BlackPawn];
    FillSide<White>(white, record);
    FillSide<Black>(black, record);
    const int score = ScorePawns<White>(white, black, record.reach[1]) -
                      ScorePawns<Black>(black, white, record.reach[0]);
    record.key = board.pawnKey;
    record.score = static_cast<std::int16_t>(score);
    record.kings = 0;
}

}  // namespace brivok
