#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

#include "board/move.h"
#include "search/time_control.h"

namespace brivok {

/// State of the search. Odd values mean that one is running.
enum class SearchMode : int { Idle = 0, Thinking = 1, Pondering = 3, Analysing = 5 };

/// Value of `maxIteration` when no fixed depth is set.
inline constexpr int NoFixedDepth = 40;

/// Most best lines that a search goes for.
inline constexpr int MaxLines = 64;

/// What a caller wants from one search of the position on the board.
struct SearchRequest {
    SearchMode mode = SearchMode::Thinking;  ///< Idle searches like Thinking
    /// Last iteration; any value but NoFixedDepth disables the clock, unless `clockCounts`.
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

    // What follows goes beyond a plain search.
    /// Root moves to choose from, all of them legal; empty for all legal moves. Must outlive the
    /// search.
    std::span<const Move> searchMoves{};
    /// Number of best lines to search, from 1 to MaxLines. With more than one, the listener hears
    /// onLines() instead of onIteration(), and a mate in the first line does not end the search.
    int lines = 1;
    bool clockCounts = false;  ///< the clock counts beside a last iteration, too
    /// End when a mate in at most this many moves is found, and look for it without null moves; 0
    /// for none.
    int mateIn = 0;
    bool searchesOnlyMove = false;  ///< search a single legal move like any other
};

/// Whether the search may choose the move: `searchMoves` is empty, or the move is among them.
[[nodiscard]] inline bool allows(std::span<const Move> searchMoves, Move move) {
    return searchMoves.empty() || std::ranges::find(searchMoves, move) != searchMoves.end();
}

}  // namespace brivok
