#pragma once

#include "movegen/generate.h"

namespace brivok {

/// Appends one side's moves to a list, filling every field as make, unmake and comparison expect.
template <Side S>
class MoveWriter {
public:
    /// Appends after the first `moveCount` moves of the list; the destructor updates the count.
    MoveWriter(Board& position, Move* moves)
        : board(position), next(moves + position.moveCount), first(moves) {}
    MoveWriter(const MoveWriter&) = delete;
    MoveWriter& operator=(const MoveWriter&) = delete;
    ~MoveWriter() { board.moveCount = static_cast<int>(next - first); }

    /// Appends a finished move.
    void add(Move move) { *next++ = move; }

    /// Appends a move or a plain capture, depending on what stands on the target.
    void addPiece(Piece piece, Square from, Square to) {
        add(makePlainMove(from, to, piece, board.squares[to]));
    }

    /// Appends the four promotions of a push or capture onto the last rank.
    void addPromotions(Square from, Square to) {
        const Move move = makePlainMove(from, to, Pawn, board.squares[to]);
        for (const Kind kind : {Kind::Queen, Kind::Rook, Kind::Bishop, Kind::Knight}) {
            add(move | field::Promocion.put(pieceOf(kind, S)));
        }
    }

    /// Appends a push, or a capture of what stands on the target; on the last rank, four
    /// promotions.
    void addPawn(Square from, Square to) {
        if (rowOf(to) == LastRow) {
            addPromotions(from, to);
        } else {
            add(makePlainMove(from, to, Pawn, board.squares[to]));
        }
    }

    /// Appends an en passant capture; `to` is the square passed over.
    void addEnPassant(Square from, Square to) {
        add(makePlainMove(from, to, Pawn, pieceOf(Kind::Pawn, opposite(S))) | field::AlPaso.put(1));
    }

    static constexpr Piece Pawn = pieceOf(Kind::Pawn, S);
    static constexpr int LastRow = S == White ? 0 : 7;  ///< where the side's pawns promote

private:
    Board& board;
    Move* next;
    Move* first;
};

template <Side S>
inline constexpr int PawnStep = S == White ? North : South;
template <Side S>
/// Reached by single pushes from home.
inline constexpr Bitboard ThirdRank = rowMask[S == White ? 5 : 2];

/// Step of a pawn's capture towards the a-file, from the pawn's square.
template <Side S>
inline constexpr int CaptureWest = S == White ? NorthWest : SouthWest;
template <Side S>
inline constexpr int CaptureEast = S == White ? NorthEast : SouthEast;  ///< towards the h-file

/// Attacks of a knight, bishop, rook or queen.
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

/// Whether this kind of castling is pseudo-legal. The side must not be in check.
template <Side S>
[[nodiscard]] inline bool mayCastle(const Board& board, int kind) {
    if ((board.castling & rightOf(kind)) == 0 || !board.castlingHomesFit(kind)) return false;
    if ((board.occupied() & board.castles.castleEmpty[kind]) != 0) return false;
    for (Bitboard transit = board.castles.castleTransit[kind]; transit != 0;) {
        if (board.isAttacked(takeNext<S>(transit), opposite(S))) return false;
    }
    return true;
}

template <Side S>
[[nodiscard]] inline Move castlingMove(const Board& board, int kind) {
    return makePlainMove(board.kingStart[whiteFirst(S)], CastledKing[kind],
                         pieceOf(Kind::King, S)) |
           field::Enroque.put(static_cast<std::uint32_t>(kind % 2 + 1));
}

}  // namespace brivok
