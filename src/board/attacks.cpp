#include "board/board.h"

namespace brivok {

Bitboard Board::attackersTo(Square sq) const {
    const Bitboard bishopsAndQueens =
        pieces[WhiteBishop] | pieces[BlackBishop] | pieces[WhiteQueen] | pieces[BlackQueen];
    const Bitboard rooksAndQueens =
        pieces[WhiteRook] | pieces[BlackRook] | pieces[WhiteQueen] | pieces[BlackQueen];
    const Bitboard kings = bit[kingSquare[0]] | bit[kingSquare[1]];
    Bitboard attackers = (kingAttacks[sq] & kings) |
                         (knightAttacks[sq] & (pieces[WhiteKnight] | pieces[BlackKnight])) |
                         (whitePawnAttacks[sq] & pieces[BlackPawn]) |
                         (blackPawnAttacks[sq] & pieces[WhitePawn]);
    // On most squares the empty-board attacks already rule out every slider.
    if ((bishopEmptyAttacks[sq] & bishopsAndQueens) != 0) {
        attackers |= bishopAttacks(sq) & bishopsAndQueens;
    }
    if ((rookEmptyAttacks[sq] & rooksAndQueens) != 0) {
        attackers |= rookAttacks(sq) & rooksAndQueens;
    }
    return attackers;
}

template <Side S>
bool Board::attackedBy(Square sq) const {
    const Bitboard queens = pieces[pieceOf(Kind::Queen, S)];
    const Bitboard bishops = pieces[pieceOf(Kind::Bishop, S)];
    if ((kingAttacks[sq] & (bit[kingSquare[whiteFirst(S)]] | queens)) != 0) return true;
    if ((pawnAttacks<opposite(S)>(sq) & (pieces[pieceOf(Kind::Pawn, S)] | bishops)) != 0) {
        return true;
    }
    if ((knightAttacks[sq] & pieces[pieceOf(Kind::Knight, S)]) != 0) return true;
    const Bitboard straight = pieces[pieceOf(Kind::Rook, S)] | queens;
    if ((rookEmptyAttacks[sq] & straight) != 0 && (rookAttacks(sq) & straight) != 0) return true;
    const Bitboard diagonal = bishops | queens;
    return (bishopEmptyAttacks[sq] & diagonal) != 0 && (bishopAttacks(sq) & diagonal) != 0;
}

bool Board::isAttacked(Square sq, Side attacker) const {
    return attacker == White ? attackedBy<White>(sq) : attackedBy<Black>(sq);
}

template <Side S>
bool Board::kingAttacked() const {
    constexpr Side Them = opposite(S);
    const Square king = kingSquare[whiteFirst(S)];
    const Bitboard queens = pieces[pieceOf(Kind::Queen, Them)];
    if ((knightAttacks[king] & pieces[pieceOf(Kind::Knight, Them)]) != 0) return true;
    const Bitboard diagonal = pieces[pieceOf(Kind::Bishop, Them)] | queens;
    if ((bishopEmptyAttacks[king] & diagonal) != 0 && (bishopAttacks(king) & diagonal) != 0) {
        return true;
    }
    const Bitboard straight = pieces[pieceOf(Kind::Rook, Them)] | queens;
    if ((rookEmptyAttacks[king] & straight) != 0 && (rookAttacks(king) & straight) != 0)
        return true;
    // A pseudo-legal king move can end next to the enemy king.
    if ((kingAttacks[king] & bit[kingSquare[whiteFirst(Them)]]) != 0) return true;
    return (pawnAttacks<S>(king) & pieces[pieceOf(Kind::Pawn, Them)]) != 0;
}

bool Board::inCheck() const {
    return sideToMove == White ? kingAttacked<White>() : kingAttacked<Black>();
}

bool Board::moverInCheck() const {
    return sideToMove == White ? kingAttacked<Black>() : kingAttacked<White>();
}

bool Board::isPinned(Square sq, Side side) const {
    const Square king = kingSquare[whiteFirst(side)];
    const std::uint32_t line = direction[king][sq];
    if (line == 0 || (between[king][sq] & occupied()) != 0) return false;
    const Side enemy = opposite(side);
    const bool diagonal = line % 2 == 1;
    Bitboard attacks = 0;
    switch (line) {
        case 1:
        case 5: attacks = diagNEAttacksFrom(sq); break;
        case 3:
        case 7: attacks = diagSEAttacksFrom(sq); break;
        case 2:
        case 6: attacks = rankAttacksFrom(sq); break;
        default: attacks = fileAttacksFrom(sq); break;
    }
    if ((attacks & bit[king]) == 0) return false;
    const Bitboard sliders = pieces[pieceOf(Kind::Queen, enemy)] |
                             pieces[pieceOf(diagonal ? Kind::Bishop : Kind::Rook, enemy)];
    return (attacks & sliders) != 0;
}

}  // namespace brivok
