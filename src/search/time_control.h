#pragma once

#include <cstdint>

namespace brivok {

/// How a game is timed.
enum class ClockKind : std::uint32_t {
    None = 0,
    Increment = 1,
    Conventional = 2,  ///< a number of moves per time control
    SuddenDeath = 3,
    FixedTime = 4  ///< a fixed time per move
};

/// Clocks and limits, in centiseconds.
struct TimeControl {
    ClockKind kind = ClockKind::None;
    std::uint32_t allocated = 0;        ///< budget of the current move; 0 for no limit
    std::uint32_t movesLeft = 0;        ///< moves to the next time control
    std::uint32_t ownTime = 0;          ///< time left
    std::uint32_t oppTime = 0;          ///< the opponent's time left
    std::uint32_t ownStart = 0;         ///< time at the start of the control
    std::uint32_t oppStart = 0;         ///< the opponent's time at the start of the control
    std::uint32_t ownIncrement = 0;     ///< added after each move
    std::uint32_t oppIncrement = 0;     ///< added after each of the opponent's moves
    std::uint32_t movesPerSession = 0;  ///< 0 unless the control is conventional
    /// Half-moves of the game before the first time control; the moves to the next one are counted
    /// from here. At most the half-moves on the board.
    std::uint32_t startPly = 0;
    std::uint32_t fixedTime = 0;     ///< per move, for ClockKind::FixedTime
    std::uint32_t oppFixedTime = 0;  ///< the same for the opponent
    /// Whether a clock was given for this move. A budget of 0 then becomes the shortest budget
    /// instead of no limit.
    bool clockGiven = false;

    // Each of these resets the whole record and sets clockGiven.
    /// `moves` per `minutes`, repeating.
    void setConventional(std::uint32_t moves, std::uint32_t minutes);
    /// `minutes` for the game, plus `seconds` after each move.
    void setIncrement(std::uint32_t minutes, std::uint32_t seconds);
    /// `minutes` for the whole game.
    void setSuddenDeath(std::uint32_t minutes);
    void setFixedTime(std::uint32_t centiseconds);

    /// Forty moves in five minutes.
    void setDefault();

    /// The budget for one move, from the clocks.
    [[nodiscard]] std::uint32_t AllocateTime() const;

    /// Doubles `allocated` if the clock allows it; returns whether it did.
    [[nodiscard]] bool ExtendTime();
};

/// The clocks of the current game.
inline TimeControl timeControl;

/// The current time on a steady clock.
[[nodiscard]] std::uint32_t centiseconds();

}  // namespace brivok
