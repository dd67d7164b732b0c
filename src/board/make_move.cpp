#include "board/board.h"
#include "board/piece_values.h"
#include "board/square_values.h"

namespace brivok {

namespace {

/// The squares of a castling move, for the home squares of this game.
struct CastlingSquares {
    int kind;
    Square rookFrom, rookTo, kingFrom, kingTo;
};

template <Side S>
CastlingSquares castlingSquares(const Board& board, Move move) {
    const bool kingSide = moveCastle(move) == KingSide;
    const int kind = (S == White ? WhiteKingSide : BlackKingSide) + (kingSide ? 0 : 1);
    const auto& rooks = S == White ? board.whiteRookStart : board.blackRookStart;
    return {kind, rooks[kingSide ? 1 : 0], CastledRook[kind], board.kingStart[whiteFirst(S)],
            CastledKing[kind]};
}

/// Square of the pawn captured en passant, given the square it passed over.
template <Side S>
constexpr Square enPassantVictim(Square to) {
    return S == White ? to + South : to + North;
}

/// Whether an enemy pawn stands beside the square where a double push ended. A pawn across the
/// board's edge does not count.
bool pawnBeside(Bitboard enemyPawns, Square to) { return (enemyPawns & besides(bit[to])) != 0; }

}  // namespace

void Board::makeMove(Move move) {
    assert(ply < UndoRecords);
    if (sideToMove == White) {
        makeFor<White>(move);
    } else {
        makeFor<Black>(move);
    }
#ifndef NDEBUG
    verify();
#endif
}

void Board::unmakeMove() {
    if (ply == 0) return;
    const Move move = undo[ply - 1].move;
    if (move == NoMove) return;
    // Not by sideToMove, which may have been set by hand since.
    if (sideOf(movePiece(move)) == White) {
        unmakeFor<White>(move);
    } else {
        unmakeFor<Black>(move);
    }
#ifndef NDEBUG
    verify();
#endif
}

void Board::keepForUnmake(Move move) {
    UndoRecord& record = undo[ply];
    static_cast<KeptState&>(record) = *this;
    record.move = move;
    ++ply;
}

template <Side S>
void Board::makeFor(Move move) {
    constexpr unsigned us = whiteFirst(S);
    const Square from = moveFrom(move);
    const Square to = moveTo(move);
    const Piece p = squares[from];
    const Piece q = squares[to];

    // 1. Common to all moves. Complementing the whole key toggles the side to move.
    keepForUnmake(move);
    sideToMove = opposite(S);
    std::uint64_t key = ~hashKey ^ epKeys[epSquare];
    epSquare = NoSquare;
    // Reads the board, not the Move: a castling king that lands on its own rook counts as a
    // capture.
    fiftyCount = isPawn(p) || q != Empty ? 0 : fiftyCount + 1;
    const std::uint32_t rights =
        castling & castles.castleRightsMask[from] & castles.castleRightsMask[to];
    if (rights != castling) {
        key ^= castleKeys[castling >> 4U & 15U] ^ castleKeys[rights >> 4U & 15U];
        castling = rights;
    }

    // 2. Castling
    if (moveCastle(move) != NoCastling) {
        hashKey = key ^ castleFor<S>(move);
        return;
    }

    // 3. Bitboards
    const Bitboard toBit = bit[to];
    const Bitboard fromTo = bit[from] | toBit;
    occRot90 = (occRot90 & rot90Clear[from]) | rot90Set[to];
    occDiagNE = (occDiagNE & diagNEClear[from]) | diagNESet[to];
    occDiagSE = (occDiagSE & diagSEClear[from]) | diagSESet[to];
    colourOcc[us] ^= fromTo;
    squares[from] = Empty;

    // 4. The captured man and the moving man
    if (q != Empty) key ^= takeFor<S>(q, to);
    if (isPawn(p)) {
        key ^= movePawnFor<S>(p, move);
    } else {
        squares[to] = p;
        key ^= pieceKeys[p][from] ^ pieceKeys[p][to];
        placement += placeValue[p][to] - placeValue[p][from];
        if (isKing(p)) {
            kingSquare[us] = to;
        } else {
            pieces[p] ^= fromTo;
        }
    }
    hashKey = key;
}

template <Side S>
std::uint64_t Board::castleFor(Move move) {
    constexpr unsigned us = whiteFirst(S);
    constexpr Piece rook = pieceOf(Kind::Rook, S);
    constexpr Piece king = pieceOf(Kind::King, S);
    const auto [kind, rookFrom, rookTo, kingFrom, kingTo] = castlingSquares<S>(*this, move);
    castling |= 1U << static_cast<unsigned>(kind);
    kingSquare[us] = kingTo;
    // Empty both homes first: the four squares may overlap.
    squares[rookFrom] = Empty;
    squares[kingFrom] = Empty;
    squares[rookTo] = rook;
    squares[kingTo] = king;
    placement += placeValue[rook][rookTo] - placeValue[rook][rookFrom];
    pieces[rook] ^= bit[rookFrom] ^ bit[rookTo];
    colourOcc[us] ^= castles.castleXor[kind];
    occRot90 ^= castles.castleXorRot90[kind];
    occDiagNE ^= castles.castleXorDiagNE[kind];
    occDiagSE ^= castles.castleXorDiagSE[kind];
    return pieceKeys[rook][rookFrom] ^ pieceKeys[rook][rookTo] ^ pieceKeys[king][kingFrom] ^
           pieceKeys[king][kingTo];
}

template <Side S>
std::uint64_t Board::takeFor(Piece taken, Square to) {
    constexpr Side Them = opposite(S);
    constexpr unsigned them = whiteFirst(Them);
    colourOcc[them] ^= bit[to];
    pieces[taken] ^= bit[to];
    material[Them] -= pieceValue[taken];
    phaseCount[Them] -= phaseWeight[taken];
    minorSurplus = static_cast<std::int16_t>(minorSurplus - minorWeight[taken]);
    majorSurplus = static_cast<std::int16_t>(majorSurplus - majorWeight[taken]);
    placement -= placeValue[taken][to];
    const std::uint64_t key = pieceKeys[taken][to];
    if (isPawn(taken)) {
        --pawnCount[them];
        pawnKey ^= key;
    } else {
        --pieceCount[them];
    }
    return key;
}

/// The pawn is the one on the square: where a king has been captured, in a position that no game
/// reaches, its moves begin on a square that may hold a pawn of the other side.
template <Side S>
std::uint64_t Board::movePawnFor(Piece pawn, Move move) {
    constexpr Side Them = opposite(S);
    constexpr unsigned us = whiteFirst(S);
    constexpr unsigned them = whiteFirst(Them);
    constexpr Piece victimPawn = pieceOf(Kind::Pawn, Them);
    const Square from = moveFrom(move);
    const Square to = moveTo(move);
    std::uint64_t key = pieceKeys[pawn][from];
    pawnKey ^= key;

    if (const Piece promo = movePromotion(move); promo != Empty) {
        squares[to] = promo;
        pieces[pawn] ^= bit[from];
        pieces[promo] |= bit[to];
        material[S] += pieceValue[promo] - pieceValue[pawn];
        phaseCount[S] += phaseWeight[promo];
        minorSurplus = static_cast<std::int16_t>(minorSurplus + minorWeight[promo]);
        majorSurplus = static_cast<std::int16_t>(majorSurplus + majorWeight[promo]);
        placement += placeValue[promo][to];
        ++pieceCount[us];
        --pawnCount[us];
        return key ^ pieceKeys[promo][to];
    }

    squares[to] = pawn;
    pieces[pawn] ^= bit[from] | bit[to];
    key ^= pieceKeys[pawn][to];
    pawnKey ^= pieceKeys[pawn][to];
    if (moveIsEnPassant(move)) {
        const Square victim = enPassantVictim<S>(to);
        squares[victim] = Empty;
        colourOcc[them] &= notBit[victim];
        pieces[victimPawn] &= notBit[victim];
        occRot90 &= rot90Clear[victim];
        occDiagNE &= diagNEClear[victim];
        occDiagSE &= diagSEClear[victim];
        key ^= pieceKeys[victimPawn][victim];
        pawnKey ^= pieceKeys[victimPawn][victim];
        material[Them] -= pieceValue[victimPawn];
        --pawnCount[them];
    } else if ((from ^ to) == 16 && pawnBeside(pieces[victimPawn], to)) {
        epSquare = (from + to) / 2;
        key ^= epKeys[epSquare];
    }
    return key;
}

template <Side S>
void Board::unmakeFor(Move move) {
    constexpr Side Them = opposite(S);
    constexpr unsigned us = whiteFirst(S);
    constexpr unsigned them = whiteFirst(Them);
    const Square from = moveFrom(move);
    const Square to = moveTo(move);

    --ply;
    sideToMove = opposite(sideToMove);
    static_cast<KeptState&>(*this) = undo[ply];

    if (moveCastle(move) != NoCastling) {
        const auto [kind, rookFrom, rookTo, kingFrom, kingTo] = castlingSquares<S>(*this, move);
        constexpr Piece rook = pieceOf(Kind::Rook, S);
        kingSquare[us] = kingFrom;
        squares[rookTo] = Empty;
        squares[kingTo] = Empty;
        squares[rookFrom] = rook;
        squares[kingFrom] = pieceOf(Kind::King, S);
        pieces[rook] ^= bit[rookFrom] ^ bit[rookTo];
        colourOcc[us] ^= castles.castleXor[kind];
        return;
    }

    const Piece captured = moveCapture(move);
    const Bitboard toBit = bit[to];
    const Bitboard fromTo = bit[from] | toBit;
    colourOcc[us] ^= fromTo;

    Piece p = squares[to];
    const Piece promo = movePromotion(move);
    if (promo != Empty) {
        p = pieceOf(Kind::Pawn, S);
        pieces[p] |= bit[from];
        pieces[promo] &= notBit[to];
        material[S] += pieceValue[p] - pieceValue[promo];
        phaseCount[S] -= phaseWeight[promo];
        ++pawnCount[us];
        --pieceCount[us];
    } else if (isKing(p)) {
        kingSquare[us] = from;
    } else {
        pieces[p] ^= fromTo;
    }
    squares[from] = p;

    if (moveIsEnPassant(move)) {
        constexpr Piece victimPawn = pieceOf(Kind::Pawn, Them);
        const Square victim = enPassantVictim<S>(to);
        squares[to] = Empty;
        squares[victim] = victimPawn;
        colourOcc[them] |= bit[victim];
        pieces[victimPawn] |= bit[victim];
        material[Them] += pieceValue[victimPawn];
        ++pawnCount[them];
        return;
    }
    squares[to] = captured;
    if (captured != Empty) {
        colourOcc[them] |= toBit;
        pieces[captured] |= toBit;
        material[Them] += pieceValue[captured];
        phaseCount[Them] += phaseWeight[captured];
        ++(isPawn(captured) ? pawnCount : pieceCount)[them];
    }
}

}  // namespace brivok
