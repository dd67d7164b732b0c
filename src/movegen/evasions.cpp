#include "movegen/generate.h"
#include "movegen/move_writer.h"

namespace brivok {

namespace {

/// The moves that answer a single check. Targets are the checker's square and, for a slider, the
/// squares between it and the king.
template <Side S>
class Evasions {
public:
    Evasions(Board& position, Move* list)
        : board(position), king(position.kingSquare[whiteFirst(S)]), writer(position, list) {}

    void generate() {
        const Bitboard own = board.occupiedBy(S);
        const Bitboard checkers = board.attackersTo(king) & board.occupiedBy(Them);
        kingMoves(own, checkers);
        if (checkers == 0 || (checkers & (checkers - 1)) != 0) return;

        const Square checker = firstBit(checkers);
        const Bitboard target = bit[checker] | between[checker][king];
        piecesTo<Kind::Knight>(target);
        piecesTo<Kind::Bishop>(target);
        piecesTo<Kind::Rook>(target);
        piecesTo<Kind::Queen>(target);
        enPassant(checker);
        pawnMoves(checker, target);
    }

private:
    static constexpr Side Them = opposite(S);

    /// A step straight away from a sliding checker stays on its line. The attack test misses that,
    /// because the king still blocks the line.
    void kingMoves(Bitboard own, Bitboard checkers) {
        Bitboard barred = 0;
        for (int count = 0; checkers != 0 && count < 2; ++count) {
            const Square checker = takeNext<White>(checkers);
            const std::uint32_t line = direction[checker][king];
            if (line == 0 || isPawn(board.squares[checker])) continue;
            const Square away = king + StepOfDirection[line];
            if (away >= 0 && away < Squares && direction[king][away] == line) barred |= bit[away];
        }
        for (Bitboard targets = kingAttacks[king] & ~own & ~barred; targets != 0;) {
            const Square to = takeNext<S>(targets);
            if (!board.isAttacked(to, Them)) writer.addPiece(pieceOf(Kind::King, S), king, to);
        }
    }

    template <Kind K>
    void piecesTo(Bitboard target) {
        constexpr Piece piece = pieceOf(K, S);
        for (Bitboard from = board.pieces[piece]; from != 0;) {
            const Square sq = takeNext<S>(from);
            if (board.isPinned(sq, S)) continue;
            for (Bitboard targets = attackSet<K>(board, sq) & target; targets != 0;) {
                writer.addPiece(piece, sq, takeNext<S>(targets));
            }
        }
    }

    /// Only when the checker is the pawn that has just made a double push.
    void enPassant(Square checker) {
        if (!hasEnPassantVictim<S>(board)) return;
        const Square ep = board.epSquare;
        if (ep != checker + PawnStep<S>) return;
        // For either side, the pawn to the left of the square comes first.
        for (const Square from : {ep - CaptureEast<S>, ep - CaptureWest<S>}) {
            if ((pawnAttacks<Them>(ep) & board.pieces[writer.Pawn] & bit[from & 63]) == 0) continue;
            if (!board.isPinned(from, S)) writer.addEnPassant(from, ep);
        }
    }

    void pawnMoves(Square checker, Bitboard target) {
        const Bitboard pawns = board.pieces[writer.Pawn];
        const Bitboard empty = ~board.occupied();
        pawnsTo(attackedWest<S>(pawns) & bit[checker], CaptureWest<S>);
        pawnsTo(attackedEast<S>(pawns) & bit[checker], CaptureEast<S>);
        const Bitboard single = pushed<S>(pawns) & empty;
        pawnsTo(single & target, PawnStep<S>);
        pawnsTo(pushed<S>(single & ThirdRank<S>) & empty & target, 2 * PawnStep<S>);
    }

    /// Double pushes are not marked as such here.
    void pawnsTo(Bitboard targets, int step) {
        while (targets != 0) {
            const Square to = takeNext<S>(targets);
            if (!board.isPinned(to - step, S)) writer.addPawn(to - step, to);
        }
    }

    Board& board;
    const Square king;
    MoveWriter<S> writer;
};

}  // namespace

void generateEvasions(Board& board, Move* list) {
    board.moveCount = 0;
    if (board.sideToMove == White) {
        Evasions<White>(board, list).generate();
    } else {
        Evasions<Black>(board, list).generate();
    }
}

}  // namespace brivok
