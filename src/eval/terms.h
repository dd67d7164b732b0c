#pragma once

#include "board/board.h"
#include "eval/eval_weights.h"
#include "hash/pawn_hash.h"

/// @file
/// The terms that Evaluate() adds up, and their shared helpers. Each is written once, for a side S,
/// with the board as White sees it, and returns centipawns from the view of S.
namespace brivok {

/// A square as S sees the board: Black's is mirrored.
template <Side S>
[[nodiscard]] constexpr Square Seen(Square sq) {
    return S == White ? sq : sq ^ 56;
}
/// A row as S sees the board.
template <Side S>
[[nodiscard]] constexpr int SeenRow(int row) {
    return S == White ? row : 7 - row;
}

/// The fields of a pawn record for one side. Number of pawns by file + 1.
template <Side S>
[[nodiscard]] auto& PawnsOnFile(auto& record) {
    return S == White ? record.whitePawnsOnFile : record.blackPawnsOnFile;
}
/// Row of the rearmost pawn by file + 1.
template <Side S>
[[nodiscard]] auto& RearRow(auto& record) {
    return S == White ? record.whiteRearRow : record.blackRearRow;
}
template <Side S>
[[nodiscard]] auto& PawnCover(auto& record) {
    return S == White ? record.whitePawnCover : record.blackPawnCover;
}

// --- Material -------------------------------------------------------------------------------

/// Blocked centre pawns and an early queen. 0 once the king-side right is lost and no minor piece
/// is on the first rank, and in variants other than normal chess.
template <Side S>
[[nodiscard]] int Development(const Board& board);

// --- Patterns, cheap enough to come before the lazy exit --------------------------------------

/// Rooks and queens on the last two ranks, if there is at least one rook and the enemy king is
/// there.
template <Side S>
[[nodiscard]] int HeavyOnSeventh(const Board& board);

/// A bishop shut in behind a defended enemy pawn near the edge.
template <Side S>
[[nodiscard]] int TrappedBishop(const Board& board);

/// A bonus for exactly two bishops; otherwise a penalty for own pawns on a bishop's colour.
template <Side S>
[[nodiscard]] int BishopPairOrBadBishop(const Board& board);

// --- Pieces and kings -------------------------------------------------------------------------

/// Mobility, file, open files.
template <Side S>
[[nodiscard]] int Rooks(const Board& board);
/// Square, mobility, outposts.
template <Side S>
[[nodiscard]] int Bishops(const Board& board, const PawnHashRecord& pawns);
/// Square, outposts.
template <Side S>
[[nodiscard]] int Knights(const Board& board, const PawnHashRecord& pawns);
/// Square.
template <Side S>
[[nodiscard]] int Queens(const Board& board);

/// Squares attacked on rank and file, up to and including the first man: 0 to 14.
[[nodiscard]] inline int RookMobilityCount(const Board& board, Square sq) {
    return rankMoveCount[sq][(board.occupied() >> ((sq & ~7) + 1)) & 63] +
           fileMoveCount[sq][(board.occRot90 >> ((sq & 7) * 8 + 1)) & 63];
}

/// Score for the squares that a bishop of S attacks, except those of its own men and those attacked
/// by enemy pawns.
template <Side S>
[[nodiscard]] int BishopMobility(const Board& board, const PawnHashRecord& pawns, Square sq) {
    const Bitboard barred = board.occupiedBy(S) | PawnCover<opposite(S)>(pawns);
    return weights::BishopMobilitySquare * popCount(board.bishopAttacks(sq) & ~barred);
}

template <Side S>
[[nodiscard]] int KingPlace(const Board& board, bool endgame);

/// Castling, the king's pawn shelter and the pawn storm against the enemy king. In an endgame only
/// castling.
template <Side S>
[[nodiscard]] int KingSafety(const Board& board, const PawnHashRecord& pawns, bool endgame);

}  // namespace brivok
