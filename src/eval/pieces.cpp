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

/// Value of the square as an outpost; 0 if it is none or if an enemy pawn can still attack it.
/// `extra` is added before a guarding pawn doubles the value.
template <Side S>
[[nodiscard]] int Outpost(const Board& board, const PawnHashRecord& pawns, Square sq, int extra) {
    const int value = weights::outpostTable[Seen<S>(sq)];
    if (value == 0 ||
        (outpostGuardMask[S][sq] & board.pieces[pieceOf(Kind::Pawn, opposite(S))]) != 0) {
        return 0;
    }
    const bool guarded = (PawnCover<S>(pawns) & bit[sq]) != 0;
    return guarded ? 2 * (value + extra) : value + extra;
}

/// Sums a term over the men of a set.
template <Side S, class Term>
[[nodiscard]] int SumOver(Bitboard men, Term term) {
    int score = 0;
    while (men != 0) score += term(takeNext<S>(men));
    return score;
}

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
int BishopPairOrBadBishop(const Board& board) {
    const Bitboard bishops = board.pieces[pieceOf(Kind::Bishop, S)];
    if (bishops == 0) return 0;
    const Bitboard second = withoutFirst(bishops);
    if (second != 0 && withoutFirst(second) == 0) {
        constexpr int Last = static_cast<int>(std::size(weights::bishopPairTable)) - 1;
        return weights::bishopPairTable[std::min(board.pawnCount[0] + board.pawnCount[1], Last)];
    }
    const Bitboard colour = (bishops & darkSquares) != 0 ? darkSquares : lightSquares;
    return -weights::PawnOnBishopColour * popCount(board.pieces[pieceOf(Kind::Pawn, S)] & colour);
}

template <Side S>
int Rooks(const Board& board) {
    const Bitboard ownPawns = board.pieces[pieceOf(Kind::Pawn, S)];
    const Bitboard enemyPawns = board.pieces[pieceOf(Kind::Pawn, opposite(S))];
    int score = 0;
    for (Bitboard rooks = board.pieces[pieceOf(Kind::Rook, S)]; rooks != 0;) {
        const Square sq = takeNext<S>(rooks);
        const Bitboard file = fileMask[fileOf(sq)];
        score += weights::rookMobilityTable[RookMobilityCount(board, sq)];
        score += weights::rookFileTable[fileOf(sq)];
        if ((ownPawns & file) != 0) continue;
        if ((enemyPawns & file) != 0) {
            score += weights::RookOnHalfOpenFile;
        } else {
            score += weights::RookOnOpenFile;
            // `rooks` holds those still to come, so doubled rooks count once.
            if ((rooks & file) != 0) score += weights::RookDoubledOnOpenFile;
        }
    }
    return score;
}

template <Side S>
int Bishops(const Board& board, const PawnHashRecord& pawns) {
    return SumOver<S>(board.pieces[pieceOf(Kind::Bishop, S)], [&](Square sq) {
        return Outpost<S>(board, pawns, sq, 0) + weights::bishopTable[Seen<S>(sq)] +
               BishopMobility<S>(board, pawns, sq);
    });
}

template <Side S>
int Knights(const Board& board, const PawnHashRecord& pawns) {
    return SumOver<S>(board.pieces[pieceOf(Kind::Knight, S)], [&](Square sq) {
        return Outpost<S>(board, pawns, sq, weights::KnightOutpost) +
               weights::knightTable[Seen<S>(sq)];
    });
}

template <Side S>
int Queens(const Board& board) {
    return SumOver<S>(board.pieces[pieceOf(Kind::Queen, S)],
                      [](Square sq) { return weights::queenTable[Seen<S>(sq)]; });
}

template int HeavyOnSeventh<White>(const Board&);
template int HeavyOnSeventh<Black>(const Board&);
template int TrappedBishop<White>(const Board&);
template int TrappedBishop<Black>(const Board&);
template int BishopPairOrBadBishop<White>(const Board&);
template int BishopPairOrBadBishop<Black>(const Board&);
template int Rooks<White>(const Board&);
template int Rooks<Black>(const Board&);
template int Bishops<White>(const Board&, const PawnHashRecord&);
template int Bishops<Black>(const Board&, const PawnHashRecord&);
template int Knights<White>(const Board&, const PawnHashRecord&);
template int Knights<Black>(const Board&, const PawnHashRecord&);
template int Queens<White>(const Board&);
template int Queens<Black>(const Board&);

}  // namespace brivok
