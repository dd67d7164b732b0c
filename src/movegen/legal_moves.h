#pragma once

#include <cstddef>
#include <span>
#include <type_traits>

#include "movegen/generate.h"

namespace brivok {

/// The evasions of a side in check, else all pseudo-legal moves. Returns whether it is in check.
bool generateForPosition(Board& board, Move* list);

/// The list that a generator has just written for the board.
[[nodiscard]] inline std::span<const Move> generated(const Board& board, const Move* list) {
    return {list, static_cast<std::size_t>(board.moveCount)};
}

/// The filter that passes every move.
struct AnyMove {
    /// True.
    constexpr bool operator()(Move /*move*/) const { return true; }
};

/// Goes through the legal moves of a list of pseudo-legal ones, in its order: calls `visit(move)`
/// with the move made on the board, and takes it back. A visit that returns false is the last. A
/// move that is not `wanted` is left out before it is made.
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

/// The same with all legal moves of the position, in the order of the generators.
template <class Visit, class Wanted = AnyMove>
void forEachLegalMove(Board& board, Visit visit, Wanted wanted = {}) {
    MoveList list;
    (void)generateForPosition(board, list);
    forEachLegalOf(board, generated(board, list), visit, wanted);
}

/// Whether the move of the list leaves the mover's own king unattacked. Makes and unmakes it.
[[nodiscard]] bool leavesKingSafe(Board& board, Move move);

/// The Move is in the list of the position and legal; false for 0.
[[nodiscard]] bool isLegalMove(Board& board, Move move);

/// The number of legal moves of the position.
[[nodiscard]] int countLegalMoves(Board& board);

/// Number of legal moves among the first `count` of the list. `lastLegal` gets the index of the
/// last legal one and is left alone if there is none.
[[nodiscard]] int countLegalInList(Board& board, const Move* moves, int count, int& lastLegal);

}  // namespace brivok
