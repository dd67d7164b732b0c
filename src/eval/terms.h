#pragma once

#include "board/board.h"
#include "eval/eval_weights.h"
#include "hash/pawn_hash.h"

/// @file
/// The terms that Evaluate() adds up, and what they share. Each is written once for a side S, as
/// White sees the board, and gives centipawns from the view of S.
namespace brivok {

/// A square, or the number of a row, as S sees the board.
template <Side S>
[[nodiscard]] constexpr Square Seen(Square sq) {
    return S == White ? sq : sq ^ 56;
}
/// The number of a row as S sees the board.
template <Side S>
[[nodiscard]] constexpr int SeenRow(int row) {
    return S == White ? row : 7 - row;
}

/// What a pawn record holds of one side.
template <Side S>
[[nodiscard]] auto& PawnsOnFile(auto& record) {
    return S == White ? record.whitePawnsOnFile : record.blackPawnsOnFile;
}
/// By file + 1: the row of the pawn furthest back.
template <Side S>
[[nodiscard]] auto& RearRow(auto& record) {
    return S == White ? record.whiteRearRow : record.blackRearRow;
}
/// The squares that the pawns attack.
template <Side S>
[[nodiscard]] auto& PawnCover(auto& record) {
    return S == White ? record.whitePawnCover : record.blackPawnCover;
}

// --- Material -------------------------------------------------------------------------------

/// Blocked centre pawns and an early queen. 0 once the king side right is lost and no minor
/// stands on the first rank, and in variants other than normal chess.
template <Side S>
[[nodiscard]] int Development(const Board& board);

// --- Patterns, cheap enough to stand before the lazy exit -------------------------------------

/// Rooks and queens on the last two ranks, with at least one rook and the enemy king there.
template <Side S>
[[nodiscard]] int HeavyOnSeventh(const Board& board);

/// A bishop shut in behind a defended enemy pawn at the edge.
template <Side S>
[[nodiscard]] int TrappedBishop(const Board& board);

/// A bonus for exactly two bishops; else a penalty for the own pawns on a bishop's colour.
template <Side S>
[[nodiscard]] int BishopPairOrBadBishop(const Board& board);

// --- Pieces and kings -------------------------------------------------------------------------

/// All rooks: mobility, file, open files.
template <Side S>
[[nodiscard]] int Rooks(const Board& board);
/// All bishops: place, mobility, outposts.
template <Side S>
[[nodiscard]] int Bishops(const Board& board, const PawnHashRecord& pawns);
/// All knights: place, outposts.
template <Side S>
[[nodiscard]] int Knights(const Board& board, const PawnHashRecord& pawns);
/// All queens: place.
template <Side S>
[[nodiscard]] int Queens(const Board& board);

/// Squares attacked along rank and file, up to and including the first man: 0 to 14.
[[nodiscard]] inline int RookMobilityCount(const Board& board, Square sq) {
    return rankMoveCount[sq][(board.occupied() >> ((sq & ~7) + 1)) & 63] +
           fileMoveCount[sq][(board.occRot90 >> ((sq & 7) * 8 + 1)) & 63];
}

/// Score of the squares that a bishop of S attacks, but for those of its own men and of enemy
/// pawns' attacks.
template <Side S>
[[nodiscard]] int BishopMobility(const Board& board, const PawnHashRecord& pawns, Square sq) {
    const Bitboard barred = board.occupiedBy(S) | PawnCover<opposite(S)>(pawns);
    return weights::BishopMobilitySquare * popCount(board.bishopAttacks(sq) & ~barred);
}

/// The king's square.
template <Side S>
[[nodiscard]] int KingPlace(const Board& board, bool endgame);

/// Castling, pawn shelter of the king and pawn storm against the other one. Of an endgame only
/// the first.
template <Side S>
[[nodiscard]] int KingSafety(const Board& board, const PawnHashRecord& pawns, bool endgame);

}  // namespace brivok
