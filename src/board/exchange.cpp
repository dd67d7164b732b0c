#include "board/board.h"
#include "board/piece_values.h"

namespace brivok {

namespace {

/// The order in which men capture: cheapest first.
constexpr Kind ByValue[] = {Kind::Pawn, Kind::Knight, Kind::Bishop, Kind::Rook, Kind::Queen};

}  // namespace

Bitboard Board::addXray(Bitboard attackers, Square sq, Square to) const {
    const Bitboard ray = behind[to][sq];
    const bool straight = fileOf(sq) == fileOf(to) || rowOf(sq) == rowOf(to);
    const Bitboard sliders = ray & (pieces[WhiteQueen] | pieces[BlackQueen] |
                                    (straight ? pieces[WhiteRook] | pieces[BlackRook]
                                              : pieces[WhiteBishop] | pieces[BlackBishop]));
    if (sliders == 0) return attackers;
    const Bitboard men = ray & occupied();
    const Square next = sq > to ? firstBit(men) : highestBit(men);
    return attackers | (sliders & bit[next]);
}

int Board::see(Side opponent, Square to, Square from, Piece promo) const {
    Bitboard attackers = addXray(attackersTo(to) & notBit[from], from, to);
    int swap[32];
    swap[0] = pieceValue[squares[to]];
    int onSquare = pieceValue[promo != Empty ? promo : squares[from]];

    Side attacker = opponent;
    int n = 1;
    while (true) {
        Square sq = kingSquare[whiteFirst(attacker)];
        if ((attackers & (occupiedBy(attacker) | bit[sq])) == 0) break;
        for (const Kind kind : ByValue) {
            const Bitboard set = attackers & pieces[pieceOf(kind, attacker)];
            if (set == 0) continue;
            sq = attacker == White ? firstBit(set) : lastBit(set);
            break;
        }
        swap[n] = onSquare - swap[n - 1];
        onSquare = pieceValue[squares[sq]];
        attackers = addXray(attackers & notBit[sq], sq, to);
        attacker = opposite(attacker);
        ++n;
    }
    for (int i = n - 1; i >= 1; --i) {
        if (swap[i] > -swap[i - 1]) swap[i - 1] = -swap[i];
    }
    return promo == Empty ? swap[0] : swap[0] + pieceValue[promo] - pieceValue[WhitePawn];
}

}  // namespace brivok
