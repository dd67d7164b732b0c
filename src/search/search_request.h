#pragma once

#include <cstdint>
#include <optional>

#include "search/time_control.h"

namespace brivok {

/// State of the search; odd values mean that one is running.
enum class SearchMode : int { Idle = 0, Thinking = 1, Pondering = 3, Analysing = 5 };

/// `maxIteration` when no fixed depth is set.
inline constexpr int NoFixedDepth = 40;

/// What a caller wants of one search of the position on the board.
struct SearchRequest {
    SearchMode mode = SearchMode::Thinking;  ///< any but Idle
    int maxIteration = NoFixedDepth;  ///< last iteration; any other value turns the clock off
    std::uint32_t nodeLimit = 0;      ///< stop after this many nodes; 0 for none
    /// The clocks, if they are told with the request. Else those of the game in progress count,
    /// which commands may set while the search runs.
    std::optional<TimeControl> clock{};
    std::uint32_t startTime = centiseconds();  ///< when the time of the move began

    /// The engine keeps the game: it watches for draws at the root, counts the moves to the next
    /// control, and makes the move that it ponders on. Otherwise whoever asks has placed the
    /// position and tells the moves to go with the clock.
    bool keepsGame = false;
};

}  // namespace brivok
