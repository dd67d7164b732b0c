#pragma once

#include <cstdint>
#include <string>

#include "board/board.h"

namespace brivok {

/// State of the endgame tables, and probe counters.
struct TablebaseState {
    std::int32_t tbMaxMen = 0;       ///< men of the largest table found: 0, 3, 4, 5 or 6
    std::string tbDirectories;       ///< directory list in use
    std::uint32_t tbCacheBytes = 0;  ///< cache budget in use
    bool noteCacheSize = true;       ///< log the size of each new cache
    // Since the program started; may wrap around in a very long analysis.
    std::uint32_t tbProbes = 0;
    std::uint32_t tbHits = 0;  ///< probes that found a value
};
inline TablebaseState tablebases;

/// The exact value of the position for the side to move, if a table has it: mate in n moves scores
/// 32768 - 2n - `ply`, being mated in n moves -32767 + 2n + `ply`, a draw 0. False if there is no
/// table or no value; `score` is then unchanged. Castling rights, the fifty-move rule and
/// repetitions are ignored.
[[nodiscard]] bool TablebaseProbe(const Board& board, std::int32_t ply, std::int32_t& score);

/// The value at an index of a table, on the wide scale: 0 is a draw, 32767 - n mate in n moves with
/// n >= 1, -32766 + n being mated in n moves with n >= 0; NoValue if there is none.
[[nodiscard]] std::int32_t ProbeTableValue(int tableId, unsigned side, std::uint64_t index);

}  // namespace brivok
