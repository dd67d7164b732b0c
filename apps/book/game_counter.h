#pragma once

#include <cstddef>
#include <vector>

#include "board/board.h"
#include "observation.h"
#include "pgn_reader.h"

namespace brivok {

/// Which games and which of their moves count for a book.
struct CountOptions {
    std::size_t plies = 40;  ///< half-moves from the start of a game, at most MaxBookPlies
    bool whiteMoves = true;
    bool blackMoves = true;
    /// A game counts only if neither player's rating is below it; an unknown rating is not.
    int minElo = 0;
};

/// A game within it fits on the undo stack of the board.
inline constexpr std::size_t MaxBookPlies = 500;

/// What has become of a game.
enum class Verdict { Counted, OtherStart, Broken, NoResult, LowRating, NoMoves };
inline constexpr std::size_t Verdicts = 6;

/// Plays games and tells what a book learns from them.
class GameCounter {
public:
    /// The board is left in the start position between games.
    GameCounter(Board& playedOn, const CountOptions& countOptions);

    /// Writes one observation for each position after a move that counts; a position that comes
    /// again within the game counts once, at its first time. Nothing but a counted game leaves any.
    /// The reason why a game is broken and its line end up in the game itself.
    [[nodiscard]] Verdict observe(PgnGame& game, std::vector<Observation>& observations);

private:
    /// Plays the moves. False at one that cannot be played.
    [[nodiscard]] bool play(PgnGame& game, std::vector<Observation>& observations);

    Board& board;
    CountOptions options;
};

}  // namespace brivok
