#include "eval/evaluate.h"
#include "eval/terms.h"

namespace brivok {

namespace {

/// Rows that stand in for the rearmost pawn of a file without one, by side, White first.
constexpr std::uint8_t RowOfNone[2] = {1, 6};

/// The squares on the neighbouring files of a file.
constexpr BitboardTable<8> Neighbours = [] {
    BitboardTable<8> table{};
    for (int file = 0; file < 8; ++file) {
        if (file > 0) table.sets[file] |= fileMask[file - 1];
        if (file < 7) table.sets[file] |= fileMask[file + 1];
    }
    return table;
}();

/// The rows from `row` back to the first rank of S, with rows as S counts them.
template <Side S>
[[nodiscard]] constexpr Bitboard RowsFrom(int row) {
    const Bitboard rows = ~Bitboard{0} << (8 * static_cast<unsigned>(row));
    return S == White ? rows : __builtin_bswap64(rows);
}

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

template <Side S>
[[nodiscard]] int ScorePawn(Bitboard own, Bitboard enemy, Square sq) {
    const int file = fileOf(sq);
    const int row = SeenRow<S>(rowOf(sq));
    const int placed = weights::pawnTable[Seen<S>(sq)];
    const Bitboard beside = own & Neighbours[file];
    const bool openFile = (enemy & fileMask[file]) == 0;
    int score = placed;

    // Backward: behind all own pawns of the neighbouring files; isolated if there are none. A file
    // without a pawn counts as if one stood on the seventh rank, so a pawn there is neither.
    const bool backward = row > 1 && (beside & RowsFrom<S>(row)) == 0;
    const bool isolated = backward && beside == 0;
    if (backward) score -= weights::BackwardPawn + (openFile ? weights::BackwardOnOpenFile : 0);
    if (isolated) score -= weights::IsolatedPawn + (openFile ? weights::IsolatedOnOpenFile : 0);

    score -= weights::DoubledPawn * (popCount(own & fileMask[file]) - 1);

    // Enemy pawns level with a passed pawn do not stop it.
    if (openFile && row < 7 && (enemy & outpostGuardMask[S][sq]) == 0) {
        score += weights::PassedTableFactor * placed;
        if (!isolated) score += weights::PassedNotIsolated;
    }
    return score;
}

/// Fills the fields of one side. Returns its score.
template <Side S>
[[nodiscard]] int FillSide(Bitboard own, Bitboard enemy, PawnHashRecord& record) {
    constexpr unsigned us = whiteFirst(S);
    const Bitboard cover = pawnCover<S>(own);
    record.cover[us] = cover;
    record.reach[us] = FilledAhead<S>(cover);
    record.files[us] = FilesOf(own);
    record.onDark[us] = static_cast<std::uint8_t>(popCount(own & darkSquares));
    record.onLight[us] = static_cast<std::uint8_t>(popCount(own & lightSquares));
    record.rowOfNone[us] = RowOfNone[us];
    int score = 0;
    for (Bitboard pawns = own; pawns != 0;) score += ScorePawn<S>(own, enemy, takeNext<S>(pawns));
    return score;
}

}  // namespace

void EvaluatePawns(const Board& board, PawnHashRecord& record) {
    const Bitboard white = board.pieces[WhitePawn];
    const Bitboard black = board.pieces[BlackPawn];
    const int score = FillSide<White>(white, black, record) - FillSide<Black>(black, white, record);
    record.key = board.pawnKey;
    record.score = static_cast<std::int16_t>(score);
    record.kings = 0;
}

}  // namespace brivok
