#pragma once

#include <algorithm>
#include <cstdint>

/// Values of positions from the side to move: distance to mate in moves.
namespace brivok::tables {

/// 0 is a draw, 1 to 127 a win in that many moves, 128 + n a loss in n (n = 0: mated).
using Outcome = std::uint8_t;

inline constexpr Outcome Draw = 0;
/// For illegal positions, and for losses in 127 moves, which a file cannot represent either.
inline constexpr Outcome NoValue = 255;
inline constexpr unsigned LongestWin = 127;
inline constexpr unsigned LongestLoss = 126;

[[nodiscard]] constexpr Outcome winIn(unsigned moves) { return static_cast<Outcome>(moves); }
[[nodiscard]] constexpr Outcome lossIn(unsigned moves) { return static_cast<Outcome>(128 + moves); }
[[nodiscard]] constexpr bool isWin(Outcome outcome) { return outcome - 1U < LongestWin; }
[[nodiscard]] constexpr bool isLoss(Outcome outcome) {
    return outcome >= lossIn(0) && outcome != NoValue;
}
/// Moves to mate, for a win or a loss.
[[nodiscard]] constexpr unsigned movesToMate(Outcome outcome) { return outcome & 127U; }

/// Bytes of a table file are signed: 127 - n is a win in n, -126 + n a loss in n, 127 no value.
/// -127 and -128 extend the scale beyond -1 and 1: a loss in 125 and a win in 126.
inline constexpr std::uint8_t BrokenByte = 127;

[[nodiscard]] constexpr std::uint8_t byteOf(Outcome outcome) {
    const auto moves = static_cast<int>(movesToMate(outcome));
    if (outcome == Draw) return 0;
    if (outcome == NoValue) return BrokenByte;
    if (isWin(outcome)) return static_cast<std::uint8_t>(moves == 127 ? -128 : 127 - moves);
    return static_cast<std::uint8_t>(moves == 126 ? -127 : moves - 126);
}

[[nodiscard]] constexpr Outcome outcomeOf(std::uint8_t byte) {
    const int value = byte < 128 ? byte : byte - 256;
    if (value == 0) return Draw;
    if (value == BrokenByte) return NoValue;
    if (value == -128) return winIn(127);
    if (value == -127) return lossIn(126);
    return value > 0 ? winIn(static_cast<unsigned>(127 - value))
                     : lossIn(static_cast<unsigned>(value + 126));
}

/// Outcomes of a player's choices, so that the greatest is the best: 0 stands for no choice, 1 to
/// 127 for a loss in that many moves, 128 for a draw, 256 - n for a win in n.
using Worth = std::uint8_t;

inline constexpr Worth NoWorth = 0;
inline constexpr Worth DrawnWorth = 128;

[[nodiscard]] constexpr Worth lossWorth(unsigned moves) { return static_cast<Worth>(moves); }
[[nodiscard]] constexpr Worth winWorth(unsigned moves) { return static_cast<Worth>(256 - moves); }

/// Moves to mate of a win or a loss.
[[nodiscard]] constexpr unsigned movesIn(Worth worth) {
    return worth > DrawnWorth ? 256U - worth : worth;
}

[[nodiscard]] constexpr Worth worthOf(Outcome outcome) {
    if (outcome == NoValue) return NoWorth;
    if (outcome == Draw) return DrawnWorth;
    return isWin(outcome) ? winWorth(movesToMate(outcome)) : lossWorth(movesToMate(outcome));
}

/// NoWorth stands for a loss in 0 here.
[[nodiscard]] constexpr Outcome outcomeOfWorth(Worth worth) {
    if (worth == DrawnWorth) return Draw;
    return worth > DrawnWorth ? winIn(movesIn(worth)) : lossIn(movesIn(worth));
}

/// What a choice is worth that leaves the opponent with the outcome.
[[nodiscard]] constexpr Worth worthOfLeaving(Outcome opponents) {
    if (opponents == NoValue) return NoWorth;
    if (opponents == Draw) return DrawnWorth;
    return isLoss(opponents) ? winWorth(movesToMate(opponents) + 1)
                             : lossWorth(movesToMate(opponents));
}

/// The best of the mover's choices, given the resulting outcomes for the opponent.
class BestReply {
public:
    /// Ignores outcomes without a value.
    void add(Outcome opponents) {
        if (opponents == NoValue) return;
        if (opponents == Draw) {
            draws = true;
        } else if (isLoss(opponents)) {
            win = std::min(win, movesToMate(opponents) + 1);
        } else {
            loss = std::max(loss, movesToMate(opponents));
        }
    }

    [[nodiscard]] bool wins() const { return win <= LongestWin; }
    [[nodiscard]] bool holds() const { return wins() || draws; }
    /// Whether there are choices and all of them lose. A move that allows mate in one loses in one.
    [[nodiscard]] bool loses() const { return !holds() && loss > 0; }
    /// Draw if there are no choices.
    [[nodiscard]] Outcome outcome() const {
        if (wins()) return winIn(win);
        return loses() ? lossIn(loss) : Draw;
    }

private:
    unsigned win = LongestWin + 1;
    unsigned loss = 0;
    bool draws = false;
};

}  // namespace brivok::tables
