#pragma once

#include <string>
#include <string_view>

#include "board/board.h"

/// @file
/// Standard algebraic notation: written in one form, read in all that are met.
namespace brivok {

/// Standard algebraic notation of a move of this position, before it is made; "xxxx" for no move
/// and for an illegal one. Only the first rival of a piece decides how it is told apart. Makes and
/// unmakes moves on the board.
[[nodiscard]] std::string moveToSan(Board& board, Move move);

/// What a word of move text means in a position: a legal move, or why it is none.
struct SanReading {
    Move move = NoMove;      ///< NoMove when the word is no legal move
    std::string_view fault;  ///< a few words on why; empty with a move
};

/// Reads standard algebraic notation and what passes for it: captures with and without a sign,
/// "+", "#" and evaluation signs behind the move or left out, promotions as e8=Q, e8Q, e8(Q),
/// e8/Q or e8q (and e8 for a queen), castling with letters or zeros, long forms as Ng1-f3 and
/// e2e4, "e.p.". The move must be one of the legal moves of the position, and the only one that
/// fits. Makes and unmakes moves on the board.
[[nodiscard]] SanReading readSan(Board& board, std::string_view text);

}  // namespace brivok
