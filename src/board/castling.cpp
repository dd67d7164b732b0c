#include "board/castling.h"

#include <algorithm>
#include <iterator>

#include "board/static_tables.h"

namespace brivok {

namespace {

/// The squares from `from` to `to` on a back rank, without `from`.
Bitboard path(Square from, Square to) { return from == to ? 0 : (between[from][to] | bit[to]); }

void buildKind(CastlingTables& tables, int kind, Square king, Square rook) {
    if (king == MissingHome || rook == MissingHome) return;
    const Square kingTarget = CastledKing[kind];
    const Square rookTarget = CastledRook[kind];
    const Bitboard transit = path(king, kingTarget);
    tables.castleTransit[kind] = transit;
    tables.castleEmpty[kind] = (transit | path(rook, rookTarget)) & notBit[king] & notBit[rook];
    const Bitboard flips = bit[king] ^ bit[rook] ^ bit[kingTarget] ^ bit[rookTarget];
    tables.castleXor[kind] = flips;
    tables.castleXorRot90[kind] = rotate90(flips);
    tables.castleXorDiagNE[kind] = rotateDiagNE(flips);
    tables.castleXorDiagSE[kind] = rotateDiagSE(flips);
}

}  // namespace

void CastlingTables::buildCastlingTables(const CastlingHomes& homes) {
    *this = {};
    std::fill(std::begin(castleRightsMask), std::end(castleRightsMask), AllRights);
    const auto takesAway = [this](Square home, std::uint32_t rights) {
        if (home != MissingHome) castleRightsMask[home] = AllRights & ~rights;
    };
    // If two homes coincide, the later call wins.
    takesAway(homes.whiteKing, WhiteRights);
    takesAway(homes.blackKing, BlackRights);
    takesAway(homes.whiteKingRook, WhiteMayKingSide);
    takesAway(homes.blackKingRook, BlackMayKingSide);
    takesAway(homes.whiteQueenRook, WhiteMayQueenSide);
    takesAway(homes.blackQueenRook, BlackMayQueenSide);

    buildKind(*this, WhiteKingSide, homes.whiteKing, homes.whiteKingRook);
    buildKind(*this, WhiteQueenSide, homes.whiteKing, homes.whiteQueenRook);
    buildKind(*this, BlackKingSide, homes.blackKing, homes.blackKingRook);
    buildKind(*this, BlackQueenSide, homes.blackKing, homes.blackQueenRook);
}

}  // namespace brivok
