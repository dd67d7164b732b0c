#include "movegen/move_count.h"

#include "movegen/move_writer.h"

namespace brivok {

namespace {

/// Sum of the sizes of sets. Without a POPCNT instruction the bytes are added up side by side, and
/// only the sums are folded: no row of the board is the target of more than 255 moves.
class SizeSum {
public:
#ifdef __POPCNT__
    void add(Bitboard set) { sum += popCount(set); }
    [[nodiscard]] int total() const { return sum; }

private:
    int sum = 0;
#else
    void add(Bitboard set) { sums += byteCounts(set); }
    [[nodiscard]] int total() const {
        constexpr Bitboard EvenBytes = 0x00FF00FF00FF00FF;
        const Bitboard pairs = (sums & EvenBytes) + (sums >> 8U & EvenBytes);
        return static_cast<int>(pairs * 0x0001000100010001 >> 48U);
    }

private:
    Bitboard sums = 0;
#endif
};

template <Side S>
class MoveCount {
public:
    MoveCount(const Board& position, const Legality& legalityOf)
        : board(position), legality(legalityOf), king(position.kingSquare[whiteFirst(S)]) {}

    int count() {
        const Bitboard pinned = legality.pinnedMen();
        add(~pinned, ~Bitboard{0});
        if ((pinned & board.occupiedBy(S)) != 0) addPinned();
        addKing();
        if (board.castling != 0) addCastling();
        if (board.epSquare != NoSquare) addEnPassant();
        return sizes.total() + further;
    }

private:
    static constexpr Side Them = opposite(S);

    /// Moves of the chosen men, except the king, to the targets.
    void add(Bitboard chosen, Bitboard targets) {
        addPieces<Kind::Knight>(chosen, targets & ~board.occupiedBy(S));
        addPieces<Kind::Rook>(chosen, targets & ~board.occupiedBy(S));
        addPieces<Kind::Bishop>(chosen, targets & ~board.occupiedBy(S));
        addPieces<Kind::Queen>(chosen, targets & ~board.occupiedBy(S));
        addPawns(board.pieces[pieceOf(Kind::Pawn, S)] & chosen, targets);
    }

    template <Kind K>
    void addPieces(Bitboard chosen, Bitboard targets) {
        for (Bitboard from = board.pieces[pieceOf(K, S)] & chosen; from != 0;) {
            sizes.add(attackSet<K>(board, takeNext<White>(from)) & targets);
        }
    }

    void addPawns(Bitboard pawns, Bitboard targets) {
        constexpr Bitboard LastRank = rowMask[S == White ? 0 : 7];
        const Bitboard empty = ~board.occupied();
        const Bitboard enemy = board.occupiedBy(Them) & targets;
        const Bitboard single = pushed<S>(pawns) & empty;
        const Bitboard steps = single & targets;
        const Bitboard west = attackedWest<S>(pawns) & enemy;
        const Bitboard east = attackedEast<S>(pawns) & enemy;
        sizes.add(steps);
        sizes.add(pushed<S>(single & ThirdRank<S>) & empty & targets);
        sizes.add(west);
        sizes.add(east);
        if (((steps | west | east) & LastRank) == 0) return;
        // Four promotions each.
        further += 3 * (popCount(steps & LastRank) + popCount(west & LastRank) +
                        popCount(east & LastRank));
    }

    /// A pinned man moves on its line, up to the pinning slider.
    void addPinned() {
        for (Bitboard sliders = legality.slidersOnLines(); sliders != 0;) {
            const Square slider = takeNext<White>(sliders);
            const Bitboard line = between[king][slider];
            const Bitboard blockers = line & board.occupied();
            if ((blockers & (blockers - 1)) == 0) add(blockers, line | bit[slider]);
        }
    }

    void addKing() {
        for (Bitboard targets = kingAttacks[king] & ~board.occupiedBy(S); targets != 0;) {
            if (!board.isAttacked(takeNext<White>(targets), Them)) ++further;
        }
    }

    void addCastling() {
        constexpr int firstKind = S == White ? WhiteKingSide : BlackKingSide;
        for (const int kind : {firstKind, firstKind + 1}) {
            if (mayCastle<S>(board, kind) && legality.allows(castlingMove<S>(board, kind))) {
                ++further;
            }
        }
    }

    void addEnPassant() {
        if (!hasEnPassantVictim<S>(board)) return;
        const Square ep = board.epSquare;
        for (Bitboard takers = pawnAttacks<Them>(ep) & board.pieces[pieceOf(Kind::Pawn, S)];
             takers != 0;) {
            if (legality.allowsEnPassant(takeNext<White>(takers), ep)) ++further;
        }
    }

    const Board& board;
    const Legality& legality;
    const Square king;
    SizeSum sizes;
    int further = 0;
};

}  // namespace

int countMoves(const Board& board, const Legality& legality) {
    if (board.sideToMove == White) return MoveCount<White>(board, legality).count();
    return MoveCount<Black>(board, legality).count();
}

}  // namespace brivok
