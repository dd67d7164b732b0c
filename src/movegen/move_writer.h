#pragma once

#include "movegen/generate.h"

namespace brivok {

/// Appends moves of one side to a list, filling every field as make, unmake and comparison expect.
template <Side S>
class MoveWriter {
public:
    /// Appends behind the first `moveCount` moves of the list; the end of the writer updates the
    /// count.
    MoveWriter(Board& position, Move* moves)
        : board(position), next(moves + position.moveCount), first(moves) {}
    MoveWriter(const MoveWriter&) = delete;
    MoveWriter& operator=(const MoveWriter&) = delete;
    ~MoveWriter() { board.moveCount = static_cast<int>(next - first); }

    /// Appends a move that is complete.
    void add(Move move) { *next++ = move; }

    /// A move or plain capture of a piece, by what stands on the target.
    void addPiece(Piece piece, Square from, Square to) {
        add(makePlainMove(from, to, piece, board.squares[to]));
    }

    /// The four promotions of a push or capture onto the last rank.
    void addPromotions(Square from, Square to) {
        const Move move = makePlainMove(from, to, Pawn, board.squares[to]);
        for (const Kind kind : {Kind::Queen, Kind::Rook, Kind::Bishop, Kind::Knight}) {
            add(move | field::Promocion.put(pieceOf(kind, S)));
        }
    }

    /// A push, or a capture of what stands on the target; four promotions on the last rank.
    void addPawn(Square from, Square to) {
        if (rowOf(to) == LastRow) {
            addPromotions(from, to);
        } else {
            add(makePlainMove(from, to, Pawn, board.squares[to]));
        }
    }

    /// Captures in passing, `to` being the square passed over.
    void addEnPassant(Square from, Square to) {
        add(makePlainMove(from, to, Pawn, pieceOf(Kind::Pawn, opposite(S))) | field::AlPaso.put(1));
    }

    static constexpr Piece Pawn = pieceOf(Kind::Pawn, S);  ///< of the side
    static constexpr int LastRow = S == White ? 0 : 7;     ///< of the side's pawns

private:
    Board& board;
    Move* next;
    Move* first;
};

/// The step of a side's pawns, and the mask of the row that its single pushes from home reach.
template <Side S>
inline constexpr int PawnStep = S == White ? North : South;
template <Side S>
inline constexpr Bitboard ThirdRank = rowMask[S == White ? 5 : 2];  ///< the row

/// Shifts a set of pawns one step ahead.
template <Side S>
[[nodiscard]] constexpr Bitboard pushed(Bitboard pawns) {
    return S == White ? pawns >> 8U : pawns << 8U;
}

/// Squares attacked by pawns towards the a-file and towards the h-file.
template <Side S>
[[nodiscard]] constexpr Bitboard attackedWest(Bitboard pawns) {
    return S == White ? (pawns & ~FileA) >> 9U : (pawns & ~FileA) << 7U;
}
/// Towards the h-file.
template <Side S>
[[nodiscard]] constexpr Bitboard attackedEast(Bitboard pawns) {
    return S == White ? (pawns & ~FileH) >> 7U : (pawns & ~FileH) << 9U;
}

/// Steps of a pawn's capture, seen from the pawn.
template <Side S>
inline constexpr int CaptureWest = S == White ? NorthWest : SouthWest;
template <Side S>
inline constexpr int CaptureEast = S == White ? NorthEast : SouthEast;  ///< towards the h-file

/// Attack set of a piece that is neither pawn nor king.
template <Kind K>
[[nodiscard]] inline Bitboard attackSet(const Board& board, Square sq) {
    if constexpr (K == Kind::Knight) return knightAttacks[sq];
    if constexpr (K == Kind::Rook) return board.rookAttacks(sq);
    if constexpr (K == Kind::Bishop) return board.bishopAttacks(sq);
    if constexpr (K == Kind::Queen) return board.rookAttacks(sq) | board.bishopAttacks(sq);
}

/// The square passed over, if a pawn can be taken on it: a position set up by hand can name any
/// square, and without an empty target and its victim there is nothing to take.
template <Side S>
[[nodiscard]] inline bool hasEnPassantVictim(const Board& board) {
    if (board.epSquare == NoSquare) return false;
    const Square ep = board.epSquare;
    return rowOf(ep) != 0 && rowOf(ep) != 7 && board.squares[ep] == Empty &&
           board.squares[ep - PawnStep<S>] == pieceOf(Kind::Pawn, opposite(S));
}

}  // namespace brivok
