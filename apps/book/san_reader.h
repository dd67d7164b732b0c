#pragma once

#include <string_view>

#include "board/board.h"

namespace brivok {

/// What a word of move text means in a position: a legal move, or why it is none.
struct SanReading {
    Move move = NoMove;
    std::string_view fault;
};

/// Reads standard algebraic notation and what passes for it: captures with and without a sign,
/// "+", "#" and evaluation signs behind the move or left out, promotions as e8=Q, e8Q, e8(Q),
/// e8/Q or e8q (and e8 for a queen), castling with letters or zeros, long forms as Ng1-f3 and
/// e2e4, "e.p.". The move must be one of the legal moves of the position, and the only one that
/// fits. Makes and unmakes moves on the board.
[[nodiscard]] SanReading readSan(Board& board, std::string_view text);

}  // namespace brivok
