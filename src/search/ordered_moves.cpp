#include "search/ordered_moves.h"

#include <algorithm>
#include <utility>

#include "board/piece_values.h"

namespace brivok {

namespace {

/// In a list longer than this the first move, with which most nodes end, is picked by a plain scan.
constexpr int ShortList = 8;

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

void OrderedMoves::scoreCapture(const Board& board, int extra) {
    const Move move = moves[scored];
    const int bound = mostGained(board, move);
    upperBounds[scored] = bound;
    keys[scored] = keyOf(extra + orderBySee(bound), scored, mostLost(board, move) > 0);
    ++scored;
}

int OrderedMoves::see(const Board& board) const {
    const Key key = keys[picked - 1];
    return isBound(key) ? exchangeValue(board, moves[indexOf(key)]) : upperBounds[indexOf(key)];
}

void OrderedMoves::sort() {
    for (int i = picked + 1; i < scored; ++i) {
        const Key key = keys[i];
        int at = i;
        for (; at > picked && keys[at - 1] < key; --at) keys[at] = keys[at - 1];
        keys[at] = key;
    }
    sorted = true;
}

Move OrderedMoves::next(const Board& board) {
    if (picked == scored) return NoMove;
    if (!sorted) {
        if (picked == 0 && scored > ShortList) {
            Key* const best = std::max_element(keys, keys + scored);
            if (!isBound(*best)) {
                std::swap(keys[0], *best);
                return moves[indexOf(keys[picked++])];
            }
        }
        sort();
    }
    for (Key key = keys[picked]; isBound(key) && !staysFirst(board, key); key = keys[picked]) {
        putInOrder(picked, lowered(board, key));
    }
    return moves[indexOf(keys[picked++])];
}

/// Whether the move wins or keeps material and remains before all others with the least exchange
/// value that it can have.
bool OrderedMoves::staysFirst(const Board& board, Key key) const {
    const int index = indexOf(key);
    const int lost = mostLost(board, moves[index]);
    if (upperBounds[index] < lost) return false;
    return picked + 1 == scored || key - Key{lost} * (2 << IndexBits) > keys[picked + 1];
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

/// Replaces a key, which may only become smaller.
void OrderedMoves::putInOrder(int at, Key key) {
    for (; at + 1 < scored && keys[at + 1] > key; ++at) keys[at] = keys[at + 1];
    keys[at] = key;
}

}  // namespace brivok
