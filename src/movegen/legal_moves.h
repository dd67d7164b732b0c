#pragma once

#include <cstddef>
#include <span>
#include <type_traits>

#include "movegen/generate.h"

namespace brivok {

/// The evasions if the side to move is in check, else all pseudo-legal moves. Returns whether it is
/// in check.
bool generateForPosition(Board& board, Move* list);

/// The list that a generator has just written.
[[nodiscard]] inline std::span<const Move> generated(const Board& board, const Move* list) {
    return {list, static_cast<std::size_t>(board.moveCount)};
}

/// A filter that passes every move.
struct AnyMove {
    constexpr bool operator()(Move /*move*/) const { return true; }
};

/// Goes through the legal moves of a pseudo-legal list, in order: makes each move, calls
/// `visit(move)` and unmakes it. Stops when a visit returns false. Moves that are not `wanted` are
/// skipped before they are made.
template <class Visit, class Wanted = AnyMove>
void forEachLegalOf(Board& board, std::span<const Move> list, Visit visit, Wanted wanted = {}) {
    for (const Move move : list) {
        if (!wanted(move)) continue;
        board.makeMove(move);
        bool goOn = true;
        if (!board.moverInCheck()) {
            if constexpr (std::is_void_v<std::invoke_result_t<Visit, Move>>) {
                visit(move);
            } else {
                goOn = visit(move);
            }
        }
        board.unmakeMove();
        if (!goOn) return;
    }
}

/// The same for all legal moves of the position, in the order of the generators.
template <class Visit, class Wanted = AnyMove>
void forEachLegalMove(Board& board, Visit visit, Wanted wanted = {}) {
    MoveList list;
    (void)generateForPosition(board, list);
    forEachLegalOf(board, generated(board, list), visit, wanted);
}

/// Whether the move leaves the mover's own king safe. Makes and unmakes it.
[[nodiscard]] bool leavesKingSafe(Board& board, Move move);

/// Whether the Move is one of the position's legal moves; false for NoMove.
[[nodiscard]] bool isLegalMove(Board& board, Move move);

[[nodiscard]] int countLegalMoves(Board& board);

/// Number of legal moves among the first `count` of the list. Sets `lastLegal` to the index of the
/// last one; leaves it alone if there is none.
[[nodiscard]] int countLegalInList(Board& board, const Move* moves, int count, int& lastLegal);

}  // namespace brivok
