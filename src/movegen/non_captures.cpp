#include "movegen/generate.h"
#include "movegen/move_writer.h"

namespace brivok {

namespace {

template <Side S>
void castling(const Board& board, MoveWriter<S>& writer) {
    constexpr int firstKind = S == White ? WhiteKingSide : BlackKingSide;
    for (const int kind : {firstKind, firstKind + 1}) {
        if (mayCastle<S>(board, kind)) writer.add(castlingMove<S>(board, kind));
    }
}

template <Side S, Kind K>
void quietMovesOf(const Board& board, MoveWriter<S>& writer, Bitboard empty) {
    constexpr Piece piece = pieceOf(K, S);
    for (Bitboard from = board.pieces[piece]; from != 0;) {
        const Square sq = takeNext<S>(from);
        for (Bitboard targets = attackSet<K>(board, sq) & empty; targets != 0;) {
            writer.add(makePlainMove(sq, takeNext<S>(targets), piece));
        }
    }
}

template <Side S>
void nonCaptures(Board& board, Move* list) {
    MoveWriter<S> writer(board, list);
    const Bitboard empty = ~board.occupied();
    castling<S>(board, writer);
    quietMovesOf<S, Kind::Knight>(board, writer, empty);
    quietMovesOf<S, Kind::Rook>(board, writer, empty);
    quietMovesOf<S, Kind::Bishop>(board, writer, empty);
    quietMovesOf<S, Kind::Queen>(board, writer, empty);

    // For both sides, king and pawns are scanned from the top of the board.
    const Square king = board.kingSquare[whiteFirst(S)];
    for (Bitboard targets = kingAttacks[king] & empty; targets != 0;) {
        writer.add(makePlainMove(king, takeNext<White>(targets), pieceOf(Kind::King, S)));
    }
    const Bitboard single = pushed<S>(board.pieces[writer.Pawn]) & empty;
    for (Bitboard targets = single & ~rowMask[writer.LastRow]; targets != 0;) {
        const Square to = takeNext<White>(targets);
        writer.add(makePlainMove(to - PawnStep<S>, to, writer.Pawn));
    }
    for (Bitboard targets = pushed<S>(single & ThirdRank<S>) & empty; targets != 0;) {
        const Square to = takeNext<White>(targets);
        writer.add(makePlainMove(to - 2 * PawnStep<S>, to, writer.Pawn) | field::MovDobleP.put(1));
    }
}

}  // namespace

void generateNonCaptures(Board& board, Move* list) {
    if (board.sideToMove == White) {
        nonCaptures<White>(board, list);
    } else {
        nonCaptures<Black>(board, list);
    }
}

}  // namespace brivok
