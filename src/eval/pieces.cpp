#include <algorithm>
#include <iterator>

#include "eval/terms.h"

namespace brivok {

namespace {

/// A bishop on the first square is trapped while a defended enemy pawn stands on the other.
struct Trap {
    Square bishop, pawn;
};
constexpr Trap Traps[] = {{squareNamed("a7"), squareNamed("b6")},
                          {squareNamed("h7"), squareNamed("g6")},
                          {squareNamed("b8"), squareNamed("c7")},
                          {squareNamed("g8"), squareNamed("f7")}};

template <Side S>
constexpr Bitboard TrapSquares = [] {
    Bitboard set = 0;
    for (const Trap& trap : Traps) set |= bit[Seen<S>(trap.bishop)];
    return set;
}();

[[nodiscard]] constexpr Bitboard withoutFirst(Bitboard set) { return set & (set - 1); }

}  // namespace

template <Side S>
int HeavyOnSeventh(const Board& board) {
    constexpr Bitboard Zone = rowMask[SeenRow<S>(0)] | rowMask[SeenRow<S>(1)];
    const Bitboard rooks = board.pieces[pieceOf(Kind::Rook, S)] & Zone;
    if (rooks == 0 || (bit[board.kingSquare[whiteFirst(opposite(S))]] & Zone) == 0) return 0;
    const int count = popCount(rooks | (board.pieces[pieceOf(Kind::Queen, S)] & Zone));
    return weights::heavyOnSeventhTable[std::min(count, 3)];
}

template <Side S>
int TrappedBishop(const Board& board) {
    const Bitboard bishops = board.pieces[pieceOf(Kind::Bishop, S)] & TrapSquares<S>;
    if (bishops == 0) return 0;
    constexpr Side Them = opposite(S);
    for (const Trap& trap : Traps) {
        const Square pawn = Seen<S>(trap.pawn);
        if ((bishops & bit[Seen<S>(trap.bishop)]) != 0 &&
            board.squares[pawn] == pieceOf(Kind::Pawn, Them) && board.isAttacked(pawn, Them)) {
            return -weights::TrappedBishop;
        }
    }
    return 0;
}

template <Side S>
int BishopPairOrBadBishop(const Board& board, const PawnHashRecord& pawns) {
    constexpr unsigned us = whiteFirst(S);
    const Bitboard bishops = board.pieces[pieceOf(Kind::Bishop, S)];
    if (bishops == 0) return 0;
    const Bitboard second = withoutFirst(bishops);
    if (second != 0 && withoutFirst(second) == 0) {
        constexpr int Last = static_cast<int>(std::size(weights::bishopPairTable)) - 1;
        return weights::bishopPairTable[std::min(board.pawnCount[0] + board.pawnCount[1], Last)];
    }
    const bool dark = (bishops & darkSquares) != 0;
    return -weights::PawnOnBishopColour * (dark ? pawns.onDark[us] : pawns.onLight[us]);
}

template <Side S>
int Rooks(const Board& board, const PawnHashRecord& pawns) {
    const unsigned ownFiles = pawns.files[whiteFirst(S)];
    const unsigned enemyFiles = pawns.files[whiteFirst(opposite(S))];
    int score = 0;
    for (Bitboard rooks = board.pieces[pieceOf(Kind::Rook, S)]; rooks != 0;) {
        const Square sq = takeNext<White>(rooks);
        const unsigned file = 1U << static_cast<unsigned>(fileOf(sq));
        score += weights::rookMobilityTable[RookMobilityCount(board, sq)];
        if ((ownFiles & file) != 0) continue;
        if ((enemyFiles & file) != 0) {
            score += weights::RookOnHalfOpenFile;
        } else {
            score += weights::RookOnOpenFile;
            // `rooks` holds those still to come, so doubled rooks count once.
            if ((rooks & fileMask[fileOf(sq)]) != 0) score += weights::RookDoubledOnOpenFile;
        }
    }
    return score;
}

/// The squares that a bishop attacks count, except those of its own men and those attacked by enemy
/// pawns.
template <Side S>
int Bishops(const Board& board, const PawnHashRecord& pawns) {
    const Bitboard counted = ~(board.occupiedBy(S) | pawns.cover[whiteFirst(opposite(S))]);
    int squares = 0;
    for (Bitboard bishops = board.pieces[pieceOf(Kind::Bishop, S)]; bishops != 0;) {
        squares += popCount(board.bishopAttacks(takeNext<White>(bishops)) & counted);
    }
    return weights::BishopMobilitySquare * squares;
}

template <Side S>
int Outposts(const Board& board, const PawnHashRecord& pawns) {
    const Bitboard knights = board.pieces[pieceOf(Kind::Knight, S)];
    const Bitboard minors = knights | board.pieces[pieceOf(Kind::Bishop, S)];
    int score = 0;
    for (Bitboard posted = minors & OutpostSquares<S>(pawns); posted != 0;) {
        const Square sq = takeNext<White>(posted);
        int value = weights::outpostTable[Seen<S>(sq)];
        if ((knights & bit[sq]) != 0) value += weights::KnightOutpost;
        const bool guarded = (pawns.cover[whiteFirst(S)] & bit[sq]) != 0;
        score += guarded ? 2 * value : value;
    }
    return score;
}

template int HeavyOnSeventh<White>(const Board&);
template int HeavyOnSeventh<Black>(const Board&);
template int TrappedBishop<White>(const Board&);
template int TrappedBishop<Black>(const Board&);
template int BishopPairOrBadBishop<White>(const Board&, const PawnHashRecord&);
template int BishopPairOrBadBishop<Black>(const Board&, const PawnHashRecord&);
template int Rooks<White>(const Board&, const PawnHashRecord&);
template int Rooks<Black>(const Board&, const PawnHashRecord&);
template int Bishops<White>(const Board&, const PawnHashRecord&);
template int Bishops<Black>(const Board&, const PawnHashRecord&);
template int Outposts<White>(const Board&, const PawnHashRecord&);
template int Outposts<Black>(const Board&, const PawnHashRecord&);

}  // namespace brivok
