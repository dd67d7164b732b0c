#include "geometry.h"

#include "board/static_tables.h"

namespace brivok::tables {

// The tables of the board number the ranks the other way round. Moves of pieces look the same in
// both numberings; White's pawns move towards higher squares here, as Black's do there.

Bitboard pawnTargets(unsigned side, Square square) {
    return side == 0 ? blackPawnAttacks[square] : whitePawnAttacks[square];
}

Bitboard onEmptyBoard(Kind man, Square square) {
    switch (man) {
        case Kind::Knight: return knightAttacks[square];
        case Kind::Bishop: return bishopEmptyAttacks[square];
        case Kind::Rook: return rookEmptyAttacks[square];
        case Kind::Queen: return queenEmptyAttacks[square];
        case Kind::King: return kingAttacks[square];
        default: return 0;
    }
}

Bitboard attacksOf(Kind man, unsigned side, Square square, Bitboard occupied) {
    if (man == Kind::Pawn) return pawnTargets(side, square);
    Bitboard attacks = onEmptyBoard(man, square);
    if (!isSlider(man)) return attacks;
    Bitboard blockers = attacks & occupied;
    while (blockers != 0) attacks &= ~behind[square][takeNext<White>(blockers)];
    return attacks;
}

}  // namespace brivok::tables
