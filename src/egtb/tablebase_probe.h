#pragma once

#include <cstdint>
#include <string>

#include "board/board.h"

namespace brivok {

/// What the engine knows of its endgame tables, and how often it has asked them.
struct TablebaseState {
    std::int32_t tbMaxMen = 0;       ///< men of the largest table found: 0, 3, 4, 5 or 6
    std::string tbDirectories;       ///< the list of directories in force
    std::uint32_t tbCacheBytes = 0;  ///< budget of the cache in force
    bool noteCacheSize = true;       ///< a new cache is noted in the log
    // Since the start of the program; they wrap around in a very long analysis.
    std::uint32_t tbProbes = 0;  ///< positions that were asked for
    std::uint32_t tbHits = 0;    ///< probes that gave a value
};
/// The one of the engine.
inline TablebaseState tablebases;

/// The exact value of the position for the side to move, as far as a table is there: a mate in n
/// moves scores 32768 - 2n - `ply`, being mated in n moves -32767 + 2n + `ply`, a draw 0. False
/// when there is no table or no value; `score` is left alone then. Castling rights, the fifty-move
/// rule and repetitions are not looked at.
[[nodiscard]] bool TablebaseProbe(const Board& board, std::int32_t ply, std::int32_t& score);

/// The value at an index of a table, on the wide scale: 0 is a draw, 32767 - n a mate in n moves
/// (n >= 1), -32766 + n being mated in n moves (n >= 0); NoValue when there is none.
[[nodiscard]] std::int32_t ProbeTableValue(int tableId, int side, std::uint64_t index);

}  // namespace brivok
