#pragma once

#include <cstdint>
#include <optional>

#include "search/time_control.h"

namespace brivok {

/// State of the search. Odd values mean that one is running.
enum class SearchMode : int { Idle = 0, Thinking = 1, Pondering = 3, Analysing = 5 };

/// Value of `maxIteration` when no fixed depth is set.
inline constexpr int NoFixedDepth = 40;

/// What a caller wants from one search of the position on the board.
struct SearchRequest {
    SearchMode mode = SearchMode::Thinking;  ///< Idle searches like Thinking
    /// Last iteration; any value but NoFixedDepth disables the clock.
    int maxIteration = NoFixedDepth;
    std::uint32_t nodeLimit = 0;  ///< stop after this many nodes; 0 for no limit
    /// The clocks, if they come with the request. Otherwise the clocks of the current game are
    /// used; commands may change them during the search.
    std::optional<TimeControl> clock{};
    std::uint32_t startTime = centiseconds();  ///< when the clock for the move started

    /// The engine keeps the game: it checks for draws at the root, counts down the moves to the
    /// next time control, and makes the move it ponders on. Otherwise the caller has set up the
    /// position and the clock carries the moves to go.
    bool keepsGame = false;
};

}  // namespace brivok
