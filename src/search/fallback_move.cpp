#include "search/fallback_move.h"

#include "movegen/legal_moves.h"
#include "search/search_request.h"

namespace brivok {

Move fallbackMove(Board& board, const TranspositionTable& table,
                  std::span<const Move> searchMoves) {
    const auto isAllowed = [searchMoves](Move move) { return allows(searchMoves, move); };
    const Move stored = table.bestMove(board);
    if (isAllowed(stored) && isLegalMove(board, stored)) return stored;

    Move first = NoMove;
    const auto take = [&first](Move move) {
        first = move;
        return false;
    };
    forEachLegalMove(board, take, isAllowed);
    return first;
}

}  // namespace brivok
