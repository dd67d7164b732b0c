#pragma once

#include <cstddef>
#include <vector>

#include "board/board.h"
#include "observation.h"
#include "pgn_reader.h"

namespace brivok {

/// Which games, and which of their moves, count for a book.
struct CountOptions {
    /// Half-moves from the start of a game that count, at most MaxBookPlies.
    std::size_t plies = 40;
    bool whiteMoves = true;
    bool blackMoves = true;
    /// A game counts unless a player's known rating is below this.
    int minElo = 0;
};

/// Games of this length fit on the board's undo stack.
inline constexpr std::size_t MaxBookPlies = 500;

/// What became of a game.
enum class Verdict { Counted, OtherStart, Broken, NoResult, LowRating, NoMoves };
inline constexpr std::size_t Verdicts = 6;

/// Plays games and extracts what a book learns from them.
class GameCounter {
public:
    /// The board holds the start position between games.
    GameCounter(Board& playedOn, const CountOptions& countOptions);

    /// Writes one observation for each position after a move that counts; a position that recurs
    /// within the game counts only the first time. Yields nothing unless the game counts. If the
    /// game is broken, the reason and its line are stored in `game`.
    [[nodiscard]] Verdict observe(PgnGame& game, std::vector<Observation>& observations);

private:
    /// Plays the moves. False at an illegal one.
    [[nodiscard]] bool play(PgnGame& game, std::vector<Observation>& observations);

    Board& board;
    CountOptions options;
};

}  // namespace brivok
