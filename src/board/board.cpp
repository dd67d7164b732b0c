#include "board/board.h"

#include <algorithm>
#include <cstring>

#include "board/piece_values.h"
#include "board/random_keys.h"
#include "board/square_values.h"

namespace brivok {

Board theBoard;

namespace {

constexpr std::uint64_t KeySeed = 9;

/// A null move toggles this into both keys, so that positions after a null move differ from those
/// that real moves reach.
constexpr std::uint64_t NullMoveKey = 0xFEDEFEDEFEDEFEDE;

/// Number of records dropped from the front of a full undo stack. Even, so that the parity of `ply`
/// still gives the side to move.
constexpr std::uint32_t DroppedAtOnce = 256;
static_assert(DroppedAtOnce % 2 == 0 && UndoRecords - UndoReserve - DroppedAtOnce >= 128);

}  // namespace

Board::Board() {
    RandomKeys random(KeySeed);
    for (const Piece piece : AllMen) {
        for (auto& key : pieceKeys[piece]) key = random.nextRandom();
    }
    for (int sq = 0; sq < 64; ++sq) epKeys[sq] = random.nextRandom();
    epKeys[NoSquare] = 0;
    for (auto& key : castleKeys) key = random.nextRandom();
}

void Board::NewGame() {
    std::fill(std::begin(squares), std::end(squares), Empty);
    setStartPosition();
    recomputeDerived();
    std::fill(std::begin(undo), std::end(undo), UndoRecord{});
    ply = 0;
    droppedPlies = 0;
    castling = AllRights;
    if (rules->variant == Variant::NoCastle) castling = 0;
    hashKey = computeHashKey();
    pawnKey = computePawnKey();
    if (newGameListener != nullptr) newGameListener->onNewGame();
    bookGate = 0;
#ifndef NDEBUG
    nullHashDelta = nullPawnDelta = 0;
    verifiable = true;
#endif
}

void Board::setStartPosition() {
    constexpr Kind backRank[8] = {Kind::Rook, Kind::Knight, Kind::Bishop, Kind::Queen,
                                  Kind::King, Kind::Bishop, Kind::Knight, Kind::Rook};
    for (int file = 0; file < 8; ++file) {
        squares[squareAt(file, 0)] = pieceOf(backRank[file], Black);
        squares[squareAt(file, 1)] = BlackPawn;
        squares[squareAt(file, 6)] = WhitePawn;
        squares[squareAt(file, 7)] = pieceOf(backRank[file], White);
    }
    sideToMove = White;
    fiftyCount = 0;
    epSquare = NoSquare;
    kingSquare[0] = kingStart[0] = StandardHomes.whiteKing;
    kingSquare[1] = kingStart[1] = StandardHomes.blackKing;
    whiteRookStart[0] = StandardHomes.whiteQueenRook;
    whiteRookStart[1] = StandardHomes.whiteKingRook;
    blackRookStart[0] = StandardHomes.blackQueenRook;
    blackRookStart[1] = StandardHomes.blackKingRook;
    for (const Side side : {White, Black}) {
        pawnCount[side] = pieceCount[side] = 8;
        phaseCount[side] = 31;
    }
    castles.buildCastlingTables(castlingHomes());
}

void Board::recomputeDerived() {
    for (const int i : {0, 1}) {
        material[i] = pawnCount[i] = pieceCount[i] = phaseCount[i] = 0;
        colourOcc[i] = 0;
    }
    std::fill(std::begin(pieces), std::end(pieces), Bitboard{0});
    placement = minorSurplus = majorSurplus = 0;
    for (Square sq = 0; sq < Squares; ++sq) {
        const Piece piece = squares[sq];
        if (piece == Empty) continue;
        const Side side = sideOf(piece);
        const unsigned i = whiteFirst(side);
        colourOcc[i] |= bit[sq];
        if (isKing(piece)) {
            kingSquare[i] = sq;
            ++pieceCount[i];
            continue;
        }
        pieces[piece] |= bit[sq];
        ++(isPawn(piece) ? pawnCount : pieceCount)[i];
        material[side] += pieceValue[piece];
        phaseCount[side] += phaseWeight[piece];
        placement += placeValue[piece][sq];
        minorSurplus = static_cast<std::int16_t>(minorSurplus + minorWeight[piece]);
        majorSurplus = static_cast<std::int16_t>(majorSurplus + majorWeight[piece]);
    }
    occRot90 = rotate90(occupied());
    occDiagNE = rotateDiagNE(occupied());
    occDiagSE = rotateDiagSE(occupied());
}

std::uint64_t Board::computeHashKey() const {
    std::uint64_t key = 0;
    for (Square sq = 0; sq < Squares; ++sq) {
        if (squares[sq] != Empty) key ^= pieceKeys[squares[sq]][sq];
    }
    key ^= epKeys[epSquare] ^ castleKeys[castling >> 4U & 15U];
    return sideToMove == Black ? ~key : key;
}

std::uint64_t Board::computePawnKey() const {
    std::uint64_t key = 0;
    for (const Piece pawn : {WhitePawn, BlackPawn}) {
        for (Bitboard set = pieces[pawn]; set != 0;) key ^= pieceKeys[pawn][takeNext<White>(set)];
    }
    return key;
}

void Board::makeNullMove() {
    undo[ply].epSquare = epSquare;
    ++ply;
    ++fiftyCount;
    sideToMove = opposite(sideToMove);
    hashKey ^= NullMoveKey;
    pawnKey ^= NullMoveKey;
#ifndef NDEBUG
    // This key does not complement for the side to move and keeps the en passant square.
    nullHashDelta ^= ~NullMoveKey ^ epKeys[epSquare];
    nullPawnDelta ^= NullMoveKey;
#endif
    epSquare = NoSquare;
#ifndef NDEBUG
    verify();
#endif
}

void Board::unmakeNullMove() {
    --ply;
    epSquare = undo[ply].epSquare;
    --fiftyCount;
    hashKey ^= NullMoveKey;
    pawnKey ^= NullMoveKey;
    sideToMove = opposite(sideToMove);
#ifndef NDEBUG
    nullHashDelta ^= ~NullMoveKey ^ epKeys[epSquare];
    nullPawnDelta ^= NullMoveKey;
    verify();
#endif
}

void Board::giveMoveTo(Side side) {
#ifndef NDEBUG
    if (sideToMove != side) nullHashDelta = ~nullHashDelta;
#endif
    sideToMove = side;
}

void Board::playGameMove(Move move) {
    if (ply >= UndoRecords - UndoReserve) {
        UndoRecord* const kept = std::begin(undo) + DroppedAtOnce;
        UndoRecord* const free = std::move(kept, std::begin(undo) + ply, std::begin(undo));
        std::fill(free, std::end(undo), UndoRecord{});
        ply -= DroppedAtOnce;
        droppedPlies += DroppedAtOnce;
    }
    makeMove(move);
}

Board::Repetitions Board::countRepetitions(int searchPly) const {
    Repetitions found = searchPly == 0 ? Repetitions{0, 1} : Repetitions{1, 0};
    const int present = static_cast<int>(ply);
    const int root = present - searchPly + 1;
    const int oldest = std::max(present - static_cast<int>(fiftyCount), 0);
    for (int i = present - 2; i >= oldest; i -= 2) {
        if (undo[i].hashKey != hashKey) continue;
        ++(i > root ? found.inTree : found.inGame);
    }
    return found;
}

void Board::updatePv(int searchPly, Move move) {
    const int end = pvLength[searchPly + 1];
    pvTable[searchPly][searchPly] = move;
    for (int i = searchPly + 1; i < end; ++i) pvTable[searchPly][i] = pvTable[searchPly + 1][i];
    pvLength[searchPly] = end;
}

}  // namespace brivok
