#include "search/ordered_moves.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "board/piece_values.h"

namespace brivok {

namespace {

/// The side with the move gains at most the man it takes and what a pawn promotes to.
int mostGained(const Board& board, Move move) {
    const int taken = pieceValue[board.squares[moveTo(move)]];
    const Piece promo = movePromotion(move);
    return promo == Empty ? taken : taken + pieceValue[promo] - pieceValue[WhitePawn];
}

/// The side with the move loses at most the man that it puts on the square. 0 if that man, by the
/// settings, is worth less than nothing.
int mostLost(const Board& board, Move move) {
    const Piece promo = movePromotion(move);
    return std::max(pieceValue[promo != Empty ? promo : board.squares[moveFrom(move)]], 0);
}

bool isGuardedByPawn(const Board& board, Square sq) {
    return board.sideToMove == White ? (whitePawnAttacks[sq] & board.pieces[BlackPawn]) != 0
                                     : (blackPawnAttacks[sq] & board.pieces[WhitePawn]) != 0;
}

int exchangeValue(const Board& board, Move move) {
    return board.see(opposite(board.sideToMove), moveTo(move), moveFrom(move), movePromotion(move));
}

}  // namespace

OrderedMoves::Key OrderedMoves::boundOfCapture(const Board& board, Move move, int extra) {
    const int bound = mostGained(board, move);
    upperBounds[scored] = bound;
    return keyOf(extra + orderBySee(bound), scored, mostLost(board, move) > 0);
}

int OrderedMoves::see(const Board& board) const {
    const Key key = keys[picked - 1];
    return isBound(key) ? exchangeValue(board, moves[indexOf(key)]) : upperBounds[indexOf(key)];
}

Move OrderedMoves::next(const Board& board) {
    const Move move = nextReady(board);
    if (move != NoMove || picked == scored) return move;
    std::sort(keys + picked, keys + scored, std::greater<>());
    ready = scored;
    sorted = true;
    return nextReady(board);
}

Move OrderedMoves::nextReady(const Board& board) {
    while (picked != ready) {
        const Key second = sorted ? secondOfSorted() : bringBestForward();
        const Key key = keys[picked];
        if (!isBound(key) || staysFirst(board, key, second)) {
            return moves[indexOf(keys[picked++])];
        }
        lowerFirst(board);
    }
    return NoMove;
}

/// Makes the best of the ready moves the first of them, and returns the second best key. They are
/// few, and their order cannot be guessed: a scan that branches on none of them beats sorting.
OrderedMoves::Key OrderedMoves::bringBestForward() {
    int at = picked;
    Key best = keys[picked];
    Key second = std::numeric_limits<Key>::min();
    for (int i = picked + 1; i < ready; ++i) {
        const Key key = keys[i];
        second = std::max(second, std::min(best, key));
        at = key > best ? i : at;
        best = std::max(best, key);
    }
    keys[at] = keys[picked];
    keys[picked] = best;
    return second;
}

/// Whether the move wins or keeps material and remains before all others with the least exchange
/// value that it can have. It remains ready as well, so those that are not need not be asked.
bool OrderedMoves::staysFirst(const Board& board, Key key, Key second) const {
    const int index = indexOf(key);
    const int lost = mostLost(board, moves[index]);
    return upperBounds[index] >= lost && key - Key{lost} * (2 << IndexBits) > second;
}

/// The key with a lower bound: of a man that a pawn can take back and that is worth more than its
/// victim and the pawn, the loss is certain. Otherwise with the exchange value itself.
OrderedMoves::Key OrderedMoves::lowered(const Board& board, Key key) {
    const int index = indexOf(key);
    const Move move = moves[index];
    int& bound = upperBounds[index];
    const int extra = orderOf(key) - orderBySee(bound);
    if (bound >= 0) {
        const int withPawn = bound - mostLost(board, move) + std::max(pieceValue[WhitePawn], 0);
        if (withPawn < 0 && isGuardedByPawn(board, moveTo(move))) {
            bound = withPawn;
            return keyOf(extra + orderBySee(bound), index, true);
        }
    }
    bound = exchangeValue(board, move);
    return keyOf(extra + orderBySee(bound), index, false);
}

/// Gives the first move left its lower score, and its place by it.
void OrderedMoves::lowerFirst(const Board& board) {
    const Key key = lowered(board, keys[picked]);
    int at = picked;
    if (sorted) {
        for (; at + 1 < ready && keys[at + 1] > key; ++at) keys[at] = keys[at + 1];
    } else if (key < ReadyKey) {
        at = --ready;
        keys[picked] = keys[at];
    }
    keys[at] = key;
}

}  // namespace brivok
