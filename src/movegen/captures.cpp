#include "movegen/generate.h"
#include "movegen/move_writer.h"

namespace brivok {

namespace {

template <Side S, Kind K>
void capturesOf(const Board& board, MoveWriter<S>& writer, Bitboard enemy) {
    constexpr Piece piece = pieceOf(K, S);
    for (Bitboard from = board.pieces[piece]; from != 0;) {
        const Square sq = takeNext<S>(from);
        for (Bitboard targets = attackSet<K>(board, sq) & enemy; targets != 0;) {
            writer.addPiece(piece, sq, takeNext<S>(targets));
        }
    }
}

template <Side S>
void pawnCaptures(const Board& board, MoveWriter<S>& writer, Bitboard enemy) {
    const Bitboard pawns = board.pieces[writer.Pawn];
    const bool enPassant = hasEnPassantVictim<S>(board);
    const Bitboard west = attackedWest<S>(pawns);
    const Bitboard east = attackedEast<S>(pawns);
    Bitboard targets = (west | east) & (enPassant ? enemy | bit[board.epSquare] : enemy);
    const auto take = [&](Square from, Square to) {
        if (enPassant && to == board.epSquare) {
            writer.addEnPassant(from, to);
        } else {
            writer.addPawn(from, to);
        }
    };
    while (targets != 0) {
        const Square to = takeNext<S>(targets);
        // Lower file first: the pawn to the left of the target, which captures towards the h-file.
        if ((east & bit[to]) != 0) take(to - CaptureEast<S>, to);
        if ((west & bit[to]) != 0) take(to - CaptureWest<S>, to);
    }
}

template <Side S>
void captures(Board& board, Move* list) {
    board.moveCount = 0;
    MoveWriter<S> writer(board, list);
    const Bitboard enemy = board.occupiedBy(opposite(S));
    capturesOf<S, Kind::Knight>(board, writer, enemy);
    capturesOf<S, Kind::Rook>(board, writer, enemy);
    capturesOf<S, Kind::Bishop>(board, writer, enemy);
    capturesOf<S, Kind::Queen>(board, writer, enemy);

    const Square king = board.kingSquare[whiteFirst(S)];
    for (Bitboard targets = kingAttacks[king] & enemy; targets != 0;) {
        writer.addPiece(pieceOf(Kind::King, S), king, takeNext<White>(targets));
    }
    const Bitboard lastRank = rowMask[writer.LastRow];
    for (Bitboard targets = pushed<S>(board.pieces[writer.Pawn]) & lastRank & ~board.occupied();
         targets != 0;) {
        const Square to = takeNext<White>(targets);
        writer.addPromotions(to - PawnStep<S>, to);
    }
    pawnCaptures<S>(board, writer, enemy);
}

}  // namespace

void generateCaptures(Board& board, Move* list) {
    if (board.sideToMove == White) {
        captures<White>(board, list);
    } else {
        captures<Black>(board, list);
    }
}

void generateMoves(Board& board, Move* list) {
    generateCaptures(board, list);
    generateNonCaptures(board, list);
}

}  // namespace brivok
