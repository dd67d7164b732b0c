#include <cstdlib>

#include "board/board.h"

namespace brivok {

bool Board::castlingHomesFit(int kind) const {
    if (rules->variant == Variant::Fischerandom) return true;
    const bool white = kind < BlackKingSide;
    const bool kingSide = kind % 2 == 0;
    const Square king = kingStart[white ? 0 : 1];
    const Square rook = (white ? whiteRookStart : blackRookStart)[kingSide ? 1 : 0];
    const Square kingHome = white ? StandardHomes.whiteKing : StandardHomes.blackKing;
    return king == kingHome && rook == (kingSide ? kingHome + 3 : kingHome - 4);
}

namespace {

bool isCastlingValid(const Board& board, Move move, Side us) {
    if (moveCastle(move) > QueenSide) return false;
    const int kind =
        (us == White ? WhiteKingSide : BlackKingSide) + (moveCastle(move) == KingSide ? 0 : 1);
    const Move expected =
        makePlainMove(board.kingStart[whiteFirst(us)], CastledKing[kind], pieceOf(Kind::King, us)) |
        field::Enroque.put(moveCastle(move));
    if (move != expected || (board.castling & rightOf(kind)) == 0) return false;
    if (!board.castlingHomesFit(kind) || (board.occupied() & board.castles.castleEmpty[kind]) != 0)
        return false;
    for (Bitboard transit = board.castles.castleTransit[kind]; transit != 0;) {
        if (board.isAttacked(takeNext<White>(transit), opposite(us))) return false;
    }
    return true;
}

bool isPawnMoveValid(const Board& board, Move move, Side us) {
    const Square from = moveFrom(move);
    const Square to = moveTo(move);
    const int forward = us == White ? North : South;
    const int lastRow = us == White ? 0 : 7;
    const int secondRow = us == White ? 6 : 1;

    const Piece promo = movePromotion(move);
    if ((rowOf(to) == lastRow) != (promo != Empty)) return false;
    if (promo != Empty &&
        (promo > BlackBishop || isPawn(promo) || isKing(promo) || sideOf(promo) != us)) {
        return false;
    }
    const bool doublePush = to == from + 2 * forward && rowOf(from) == secondRow;
    if (field::MovDobleP.get(move) != 0 && !doublePush) return false;
    if (to == from + forward || doublePush) {
        return moveCapture(move) == Empty && !moveIsEnPassant(move) &&
               board.squares[from + forward] == Empty && board.squares[to] == Empty;
    }

    const Bitboard attacks = us == White ? whitePawnAttacks[from] : blackPawnAttacks[from];
    if ((attacks & bit[to]) == 0 || moveCapture(move) == Empty) return false;
    if (!moveIsEnPassant(move)) return true;  // the caller has compared the captured piece
    const Piece victim = pieceOf(Kind::Pawn, opposite(us));
    return board.epSquare == to && moveCapture(move) == victim && board.squares[to] == Empty &&
           board.squares[to - forward] == victim;
}

}  // namespace

bool Board::isMoveValid(Move move) const {
    const Side side = sideToMove;
    const Square from = moveFrom(move);
    const Square to = moveTo(move);
    const Piece piece = movePiece(move);
    if ((move & UnusedMoveBits) != 0 || piece == Empty || piece > BlackBishop) return false;
    if (squares[from] != piece || sideOf(piece) != side) return false;
    if (moveCastle(move) != NoCastling) return isCastlingValid(*this, move, side);

    const Piece captured = moveCapture(move);
    if (!moveIsEnPassant(move) && captured != squares[to]) return false;
    if (captured != Empty && (isKing(captured) || (occupiedBy(side) & bit[to]) != 0)) return false;
    if (isPawn(piece)) return isPawnMoveValid(*this, move, side);

    constexpr Move PawnFields =
        field::Promocion.put(15) | field::AlPaso.put(1) | field::MovDobleP.put(1);
    if ((move & PawnFields) != 0) return false;
    switch (kindOf(piece)) {
        case Kind::Knight: return (knightAttacks[from] & bit[to]) != 0;
        case Kind::King:
            return from == kingSquare[whiteFirst(side)] && (kingAttacks[from] & bit[to]) != 0;
        case Kind::Rook: return (rookAttacks(from) & bit[to]) != 0;
        case Kind::Bishop: return (bishopAttacks(from) & bit[to]) != 0;
        case Kind::Queen: return ((rookAttacks(from) | bishopAttacks(from)) & bit[to]) != 0;
        case Kind::Pawn: break;
    }
    return false;
}

}  // namespace brivok
