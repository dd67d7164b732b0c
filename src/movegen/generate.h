#pragma once

#include "board/board.h"

namespace brivok {

/// Room for every list of pseudo-legal moves: a side has at most 15 men beside its king, and no
/// man has more than 27 moves.
inline constexpr int MaxMoves = 448;

/// A list of moves, owned by the caller; its length stands in `Board::moveCount`.
using MoveList = Move[MaxMoves];

/// Writes the captures, promotions and en-passant captures of the side to move. Pseudo-legal: the
/// caller makes a move and asks moverInCheck(). The order of the list is fixed and decides ties in
/// the search.
void generateCaptures(Board& board, Move* list);

/// Appends all other moves, castling first. For a side that is not in check.
void generateNonCaptures(Board& board, Move* list);

/// Captures, then non-captures.
void generateMoves(Board& board, Move* list);

/// Writes the moves of a side that is in check. Every one of them is legal, so an empty list is
/// checkmate.
void generateEvasions(Board& board, Move* list);

}  // namespace brivok
