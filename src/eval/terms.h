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

/// The squares of S on which its minor pieces profit from an outpost: the table has a value there,
/// and no enemy pawn can ever attack them.
template <Side S>
[[nodiscard]] Bitboard OutpostSquares(const PawnHashRecord& pawns) {
    constexpr Bitboard valued = [] {
        Bitboard set = 0;
        for (Square sq = 0; sq < 64; ++sq) {
            if (weights::outpostTable[Seen<S>(sq)] != 0) set |= bit[sq];
        }
        return set;
    }();
    return valued & ~pawns.reach[whiteFirst(opposite(S))];
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
[[nodiscard]] int BishopPairOrBadBishop(const Board& board, const PawnHashRecord& pawns);

// --- Pieces and kings -------------------------------------------------------------------------

/// Mobility, open files.
template <Side S>
[[nodiscard]] int Rooks(const Board& board, const PawnHashRecord& pawns);
/// Mobility of the bishops.
template <Side S>
[[nodiscard]] int Bishops(const Board& board, const PawnHashRecord& pawns);
/// Outposts of knights and bishops.
template <Side S>
[[nodiscard]] int Outposts(const Board& board, const PawnHashRecord& pawns);

/// Squares attacked on rank and file, up to and including the first man: 0 to 14.
[[nodiscard]] inline int RookMobilityCount(const Board& board, Square sq) {
    return rankMoveCount[sq][(board.occupied() >> ((sq & ~7) + 1)) & 63] +
           fileMoveCount[sq][(board.occRot90 >> ((sq & 7) * 8 + 1)) & 63];
}

template <Side S>
[[nodiscard]] int KingPlace(const Board& board, bool endgame);

/// Castling if it was the last move, else where the king stands relative to its start square.
template <Side S>
[[nodiscard]] int CastlingState(const Board& board, const PawnHashRecord& pawns);

/// The king's pawn shelter, and the storm of its side's pawns against the enemy king. Counts only
/// before the endgame.
template <Side S>
[[nodiscard]] int KingShelter(const Board& board, const PawnHashRecord& pawns);

/// What `PawnHashRecord::kings` holds for the kings of this position; never 0.
[[nodiscard]] inline std::uint16_t KingPair(const Board& board) {
    return static_cast<std::uint16_t>(1 << 12 | board.kingSquare[0] << 6 | board.kingSquare[1]);
}

}  // namespace brivok
