#include "board/board.h"
#include "board/piece_values.h"

namespace brivok {

namespace {

/// The order in which men capture: cheapest first.
constexpr Kind ByValue[] = {Kind::Pawn, Kind::Knight, Kind::Bishop, Kind::Rook, Kind::Queen};

}  // namespace

Bitboard Board::addXray(Bitboard attackers, Square sq, Square to) const {
    const std::uint32_t line = direction[to][sq];
    if (line == 0) return attackers;
    const int step = StepOfDirection[line];
    const Kind slider = line % 2 == 1 ? Kind::Bishop : Kind::Rook;
    // Stop at the edge: a step that wraps around it is not a king's step.
    for (Square behind = sq; (kingAttacks[behind] & bit[(behind + step) & 63]) != 0;) {
        behind += step;
        const Piece piece = squares[behind];
        if (piece == Empty) continue;
        const auto isOf = [piece](Kind kind) {
            return piece == pieceOf(kind, White) || piece == pieceOf(kind, Black);
        };
        if (isOf(slider) || isOf(Kind::Queen)) attackers |= bit[behind];
        break;
    }
    return attackers;
}

int Board::see(Side opponent, Square to, Square from, Piece promo) const {
    Bitboard attackers = attackersTo(to) & notBit[from];
    int swap[32];
    swap[0] = pieceValue[squares[to]];
    int onSquare = pieceValue[promo != Empty ? promo : squares[from]];
    attackers = addXray(attackers, from, to);

    Side attacker = opponent;
    int n = 1;
    while (attackers != 0) {
        Square sq = NoSquare;
        for (const Kind kind : ByValue) {
            const Bitboard set = attackers & pieces[pieceOf(kind, attacker)];
            if (set == 0) continue;
            sq = attacker == White ? firstBit(set) : lastBit(set);
            break;
        }
        if (sq == NoSquare) {
            const Square king = kingSquare[whiteFirst(attacker)];
            if ((attackers & bit[king]) == 0) break;
            sq = king;
        }
        swap[n] = onSquare - swap[n - 1];
        onSquare = pieceValue[squares[sq]];
        attackers &= notBit[sq];
        attackers = addXray(attackers, sq, to);
        attacker = opposite(attacker);
        ++n;
    }
    for (int i = n - 1; i >= 1; --i) {
        if (swap[i] > -swap[i - 1]) swap[i - 1] = -swap[i];
    }
    return promo == Empty ? swap[0] : swap[0] + pieceValue[promo] - pieceValue[WhitePawn];
}

}  // namespace brivok
