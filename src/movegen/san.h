#pragma once

#include <string>
#include <string_view>

#include "board/board.h"

/// @file
/// Standard algebraic notation: written in one form, read in all the forms in use.
namespace brivok {

/// Standard algebraic notation of a move of this position, before it is made; "xxxx" if the move is
/// illegal or NoMove. Only the first rival piece decides the disambiguation. Makes and unmakes
/// moves on the board.
[[nodiscard]] std::string moveToSan(Board& board, Move move);

/// The result of readSan(): a legal move, or why there is none.
struct SanReading {
    Move move = NoMove;      ///< NoMove if the word is not a legal move
    std::string_view fault;  ///< a few words on why not; empty if there is a move
};

/// Reads standard algebraic notation and its common variants: captures with or without a sign, "+",
/// "#" and annotation signs present or absent, promotions as e8=Q, e8Q, e8(Q), e8/Q or e8q (and e8
/// for a queen), castling with letters or zeros, long forms such as Ng1-f3 and e2e4, "e.p.".
/// Exactly one legal move must match. Makes and unmakes moves on the board.
[[nodiscard]] SanReading readSan(Board& board, std::string_view text);

}  // namespace brivok
