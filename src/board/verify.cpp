#ifndef NDEBUG

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "board/board.h"

namespace brivok {

namespace {

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "board check failed: %s\n", what);
    std::abort();
}

template <class T, std::size_t N>
bool same(const T (&a)[N], const T (&b)[N]) {
    return std::equal(std::begin(a), std::end(a), std::begin(b));
}

}  // namespace

void Board::verify() const {
    // After a king has been captured, in a position that no game reaches, the counts are inexact.
    const auto count = [this](Piece piece) {
        return std::count(std::begin(squares), std::end(squares), piece);
    };
    if (!verifiable || count(WhiteKing) != 1 || count(BlackKing) != 1) return;

    static Board full;
    std::copy(std::begin(squares), std::end(squares), std::begin(full.squares));
    full.sideToMove = sideToMove;
    full.epSquare = epSquare;
    full.castling = castling;
    full.recomputeDerived();
    full.castles.buildCastlingTables(castlingHomes());
    require(same(material, full.material), "material");
    require(same(pawnCount, full.pawnCount) && same(pieceCount, full.pieceCount), "counts of men");
    require(same(phaseCount, full.phaseCount), "phaseCount");
    require(placement == full.placement, "placement");
    require(minorSurplus == full.minorSurplus && majorSurplus == full.majorSurplus, "surpluses");
    require(same(kingSquare, full.kingSquare), "kingSquare");
    require(same(colourOcc, full.colourOcc), "colourOcc");
    for (const Piece piece : AllMen) {
        require(isKing(piece) || pieces[piece] == full.pieces[piece], "pieces");
    }
    require(occRot90 == full.occRot90, "occRot90");
    require(occDiagNE == full.occDiagNE, "occDiagNE");
    require(occDiagSE == full.occDiagSE, "occDiagSE");
    require(same(castles.castleRightsMask, full.castles.castleRightsMask) &&
                same(castles.castleXor, full.castles.castleXor),
            "castling tables");
    require((hashKey ^ nullHashDelta) == full.computeHashKey(), "hashKey");
    require((pawnKey ^ nullPawnDelta) == full.computePawnKey(), "pawnKey");
}

}  // namespace brivok

#endif
