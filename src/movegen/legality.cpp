#include "movegen/legality.h"

namespace brivok {

Legality::Legality(const Board& position)
    : board(position), king(position.kingSquare[whiteFirst(position.sideToMove)]) {
    if (board.sideToMove == White) {
        find<White>();
    } else {
        find<Black>();
    }
}

template <Side S>
void Legality::find() {
    constexpr Side Them = opposite(S);
    const Square theirKing = board.kingSquare[whiteFirst(Them)];
    // A captured king's square is never updated, and none of its own kings can return to it.
    isKnown = board.squares[king] == pieceOf(Kind::King, S) &&
              board.squares[theirKing] == pieceOf(Kind::King, Them) &&
              (kingAttacks[king] & bit[theirKing]) == 0;

    const Bitboard queens = board.pieces[pieceOf(Kind::Queen, Them)];
    sliders = (rookEmptyAttacks[king] & (board.pieces[pieceOf(Kind::Rook, Them)] | queens)) |
              (bishopEmptyAttacks[king] & (board.pieces[pieceOf(Kind::Bishop, Them)] | queens));
    checkers = (knightAttacks[king] & board.pieces[pieceOf(Kind::Knight, Them)]) |
               (pawnAttacks<S>(king) & board.pieces[pieceOf(Kind::Pawn, Them)]);
    const Bitboard enPassantTakers =
        board.epSquare == NoSquare
            ? 0
            : pawnAttacks<Them>(board.epSquare) & board.pieces[pieceOf(Kind::Pawn, S)];
    for (Bitboard rest = sliders; rest != 0;) {
        const Square sq = takeNext<White>(rest);
        const Bitboard blockers = between[king][sq] & board.occupied();
        if (blockers == 0) {
            checkers |= bit[sq];
        } else if ((blockers & (blockers - 1)) == 0) {
            pinned |= blockers;
        }
    }
    if (checkers == 0) {
        targets = ~Bitboard{0};
        if (isKnown) bound = pinned | bit[king] | enPassantTakers;
    } else if ((checkers & (checkers - 1)) == 0) {
        targets = checkers | between[king][firstBit(checkers)];
    }
}

bool Legality::allowsBound(Move move) const {
    const Square from = moveFrom(move);
    const Square to = moveTo(move);
    if (from == king) return allowsKingMove(move);
    if (moveIsEnPassant(move)) return allowsEnPassant(from, to);
    if ((targets & bit[to]) == 0) return false;
    return (pinned & bit[from]) == 0 || direction[king][from] == direction[king][to];
}

/// A king that leaves its square opens no line to itself but that of a slider that gives check. The
/// generator has tested the squares that a castling king crosses, and castling itself only changes
/// what stands on the back rank.
bool Legality::allowsKingMove(Move move) const {
    const Side us = board.sideToMove;
    const Side them = opposite(us);
    const Square to = moveTo(move);
    if (moveCastle(move) != NoCastling) {
        const int kind =
            (us == White ? WhiteKingSide : BlackKingSide) + (moveCastle(move) == KingSide ? 0 : 1);
        const unsigned rank = static_cast<unsigned>(to & ~7);
        const Bitboard after = board.occupied() ^ board.castles.castleXor[kind];
        const Bitboard attackers =
            board.pieces[pieceOf(Kind::Rook, them)] | board.pieces[pieceOf(Kind::Queen, them)];
        const bool staysInCheck = to == king && (checkers & ~rowMask[rowOf(to)]) != 0;
        return !staysInCheck && (rankAttacks[to][after >> (rank + 1) & 63U] & attackers) == 0;
    }
    for (Bitboard rest = checkers & sliders; rest != 0;) {
        if (direction[takeNext<White>(rest)][king] == direction[king][to]) return false;
    }
    return !board.isAttacked(to, them);
}

/// Two men leave their lines at once, so each slider is asked again.
bool Legality::allowsEnPassant(Square from, Square to) const {
    const Bitboard victim = bit[board.sideToMove == White ? to + South : to + North];
    if ((checkers & ~sliders & ~victim) != 0) return false;
    const Bitboard after = (board.occupied() ^ bit[from] ^ victim) | bit[to];
    for (Bitboard rest = sliders; rest != 0;) {
        if ((between[king][takeNext<White>(rest)] & after) == 0) return false;
    }
    return true;
}

}  // namespace brivok
