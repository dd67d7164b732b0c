#pragma once

#include "board/board.h"

namespace brivok {

/// Enough for any list of pseudo-legal moves: a side has at most 15 men besides its king, and no
/// man has more than 27 moves.
inline constexpr int MaxMoves = 448;

/// A list of moves, owned by the caller; its length is in `Board::moveCount`.
using MoveList = Move[MaxMoves];

/// Writes the captures, promotions and en passant captures of the side to move. Pseudo-legal: the
/// caller makes each move and asks moverInCheck(). The order is fixed and decides ties in the
/// search.
void generateCaptures(Board& board, Move* list);

/// Appends all other moves, castling first. The side to move must not be in check.
void generateNonCaptures(Board& board, Move* list);

/// Captures, then non-captures.
void generateMoves(Board& board, Move* list);

/// Writes the moves of a side in check. All are legal, so an empty list means checkmate.
void generateEvasions(Board& board, Move* list);

}  // namespace brivok
