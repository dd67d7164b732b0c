#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

/// Values of positions from the side to move: distance to mate in moves.
namespace brivok::tables {

/// 0 is a draw, 1 to 1023 a win in that many moves, 1024 + n a loss in n (n = 0: mated).
using Outcome = std::uint16_t;

inline constexpr Outcome Draw = 0;
/// For illegal positions.
inline constexpr Outcome NoValue = 2047;
inline constexpr std::size_t OutcomeCount = 2048;  ///< all outcomes are less than that
inline constexpr unsigned LongestWin = 1023;
inline constexpr unsigned LongestLoss = 1022;
/// The longest that entries of one byte can represent.
inline constexpr unsigned LongestByteWin = 127;
inline constexpr unsigned LongestByteLoss = 126;

[[nodiscard]] constexpr Outcome winIn(unsigned moves) { return static_cast<Outcome>(moves); }
[[nodiscard]] constexpr Outcome lossIn(unsigned moves) {
    return static_cast<Outcome>(LongestWin + 1 + moves);
}
[[nodiscard]] constexpr bool isWin(Outcome outcome) { return outcome - 1U < LongestWin; }
[[nodiscard]] constexpr bool isLoss(Outcome outcome) {
    return outcome >= lossIn(0) && outcome != NoValue;
}
/// Moves to mate, for a win or a loss.
[[nodiscard]] constexpr unsigned movesToMate(Outcome outcome) { return outcome & LongestWin; }

/// Entries of one byte are signed: 127 - n is a win in n, -126 + n a loss in n, 127 no value.
/// -127 and -128 extend the scale beyond -1 and 1: a loss in 126 and a win in 127.
inline constexpr std::uint8_t BrokenByte = 127;

/// BrokenByte also for longer mates than a byte can represent.
[[nodiscard]] constexpr std::uint8_t byteOf(Outcome outcome) {
    if (outcome == Draw) return 0;
    const auto moves = static_cast<int>(movesToMate(outcome));
    if (isWin(outcome)) {
        if (moves > static_cast<int>(LongestByteWin)) return BrokenByte;
        return static_cast<std::uint8_t>(moves == 127 ? -128 : 127 - moves);
    }
    if (moves > static_cast<int>(LongestByteLoss)) return BrokenByte;
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

/// Entries of two bytes are signed as well: 32767 - n is a win in n, -32766 + n a loss in n, 32767
/// no value. Here as the unsigned number with the same bits.
[[nodiscard]] constexpr std::uint16_t wideOf(Outcome outcome) {
    if (outcome == Draw) return 0;
    if (outcome == NoValue) return 0x7FFF;
    const unsigned moves = movesToMate(outcome);
    return static_cast<std::uint16_t>(isWin(outcome) ? 0x7FFF - moves : 0x8002 + moves);
}

/// NoValue also for values that no table holds.
[[nodiscard]] constexpr Outcome outcomeOfWide(std::uint16_t wide) {
    if (wide == 0) return Draw;
    const unsigned moves = wide < 0x8000 ? 0x7FFFU - wide : wide - 0x8002U;
    if (wide < 0x8000) return moves != 0 && moves <= LongestWin ? winIn(moves) : NoValue;
    return moves <= LongestLoss ? lossIn(moves) : NoValue;
}

/// An entry of one or of two bytes.
template <typename Entry>
[[nodiscard]] constexpr Entry entryOf(Outcome outcome) {
    if constexpr (sizeof(Entry) == 1) {
        return byteOf(outcome);
    } else {
        return wideOf(outcome);
    }
}

[[nodiscard]] constexpr Outcome outcomeOfEntry(std::uint8_t entry) { return outcomeOf(entry); }
[[nodiscard]] constexpr Outcome outcomeOfEntry(std::uint16_t entry) { return outcomeOfWide(entry); }

/// Outcomes of a player's choices, so that the greatest is the best. In a byte: 0 stands for no
/// choice, 1 to 127 for a loss in that many moves, 128 for a draw, 256 - n for a win in n.
using Worth = std::uint8_t;

/// The same with more room: 32768 for a draw, 65536 - n for a win in n.
using WideWorth = std::uint16_t;

inline constexpr Worth NoWorth = 0;

template <typename W>
inline constexpr W Drawn = static_cast<W>(std::numeric_limits<W>::max() / 2 + 1);
inline constexpr Worth DrawnWorth = Drawn<Worth>;

template <typename W = Worth>
[[nodiscard]] constexpr W lossWorth(unsigned moves) {
    return static_cast<W>(moves);
}
template <typename W = Worth>
[[nodiscard]] constexpr W winWorth(unsigned moves) {
    return static_cast<W>(0U - moves);
}

/// The longest win that a table with such worths can hold.
template <typename W>
inline constexpr unsigned LongestWinIn = sizeof(W) == 1 ? LongestByteWin : LongestWin;

/// Moves to mate of a win or a loss.
template <typename W>
[[nodiscard]] constexpr unsigned movesIn(W worth) {
    constexpr W drawn = Drawn<W>;
    return worth > drawn ? static_cast<W>(0U - worth) : worth;
}

template <typename W = Worth>
[[nodiscard]] constexpr W worthOf(Outcome outcome) {
    if (outcome == NoValue) return NoWorth;
    if (outcome == Draw) return Drawn<W>;
    return isWin(outcome) ? winWorth<W>(movesToMate(outcome)) : lossWorth<W>(movesToMate(outcome));
}

/// NoWorth stands for a loss in 0 here.
template <typename W>
[[nodiscard]] constexpr Outcome outcomeOfWorth(W worth) {
    constexpr W drawn = Drawn<W>;
    if (worth == drawn) return Draw;
    return worth > drawn ? winIn(movesIn(worth)) : lossIn(movesIn(worth));
}

/// The same worth with as much room as W has.
template <typename W>
[[nodiscard]] constexpr W widened(Worth worth) {
    if (worth < DrawnWorth) return worth;
    return worth == DrawnWorth ? Drawn<W> : winWorth<W>(movesIn(worth));
}

/// The same worth in a byte; NoWorth if it does not fit.
template <typename W>
[[nodiscard]] constexpr Worth narrowed(W worth) {
    const auto narrow = static_cast<Worth>(worth == Drawn<W> ? DrawnWorth : worth);
    return widened<W>(narrow) == worth ? narrow : NoWorth;
}

/// What a choice is worth that leaves the opponent with the outcome, which must fit into a byte.
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
