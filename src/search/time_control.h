#pragma once

#include <cstdint>

namespace brivok {

/// How a game is timed.
enum class ClockKind : std::uint32_t {
    None = 0,
    Increment = 1,
    Conventional = 2,  ///< a number of moves per control
    SuddenDeath = 3,
    FixedTime = 4  ///< a fixed time per move
};

/// Clocks and limits, in centiseconds.
struct TimeControl {
    ClockKind kind = ClockKind::None;   ///< how the game is timed
    std::uint32_t allocated = 0;        ///< budget of the present move; 0 means no limit
    std::uint32_t movesLeft = 0;        ///< moves to the next control
    std::uint32_t ownTime = 0;          ///< left
    std::uint32_t oppTime = 0;          ///< left to the opponent
    std::uint32_t ownStart = 0;         ///< time at the start of the control
    std::uint32_t oppStart = 0;         ///< the opponent's time at the start of the control
    std::uint32_t ownIncrement = 0;     ///< added after each move
    std::uint32_t oppIncrement = 0;     ///< the same for the opponent
    std::uint32_t movesPerSession = 0;  ///< 0 if the control is not conventional
    std::uint32_t fixedTime = 0;        ///< for each move, if the clock is of that kind
    std::uint32_t oppFixedTime = 0;     ///< the same for the opponent
    /// Some clock was given for this move: a budget that comes to nothing is then the shortest
    /// one, and not none.
    bool clockGiven = false;

    // Each of these zeroes the whole record first; a clock is given then.
    /// `moves` in so many minutes, again and again.
    void setConventional(std::uint32_t moves, std::uint32_t minutes);
    /// A time for the game and more after each move.
    void setIncrement(std::uint32_t minutes, std::uint32_t seconds);
    /// A time for the whole game.
    void setSuddenDeath(std::uint32_t minutes);
    /// A time for each move.
    void setFixedTime(std::uint32_t centiseconds);

    /// Forty moves in five minutes.
    void setDefault();

    /// The budget for one move by the clocks.
    [[nodiscard]] std::uint32_t AllocateTime() const;

    /// Doubles `allocated` if the clock bears it; false if it does not.
    [[nodiscard]] bool ExtendTime();
};

/// That of the present game.
inline TimeControl timeControl;

/// The present time in centiseconds of a steady clock.
[[nodiscard]] std::uint32_t centiseconds();

}  // namespace brivok
