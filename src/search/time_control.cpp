#include "search/time_control.h"

#include <algorithm>

#include "platform/platform.h"

namespace brivok {

namespace {

constexpr std::uint32_t CentisecondsPerMinute = 6000;

/// A budget below this (ten seconds) is cut slightly near the end of a conventional control.
constexpr double ShortBudget = 1000.0;

/// Adds to a budget as much of the increment as the clock can bear: all, two thirds, or none.
double withIncrement(double budget, const TimeControl& clock) {
    const double increment = clock.ownIncrement;
    if (clock.ownIncrement == 0) return budget;
    const double rest = clock.ownTime - budget;
    if (rest - increment > 500) return budget + increment;
    if (rest - increment * 2 / 3 > 100) return budget + increment * 2 / 3;
    return budget;
}

double conventionalBudget(const TimeControl& clock) {
    const double moves = std::max(clock.movesLeft, 1U);
    const double budget = clock.ownTime / moves * 0.9;
    const bool nearlyThere = clock.movesLeft < 0.2 * clock.movesPerSession;
    return withIncrement(budget < ShortBudget && nearlyThere ? budget * 0.85 : budget, clock);
}

/// Number of moves over which to spread the remaining time: more when behind on the clock, fewer
/// when ahead.
int movesToSpread(const TimeControl& clock) {
    const double own = clock.ownTime;
    const double opp = clock.oppTime;
    int moves = 30;
    const bool shortGame = clock.ownStart < CentisecondsPerMinute && clock.ownIncrement == 0;
    if ((own < clock.ownStart * 2.0 / 3.0 || shortGame) && own < opp) {
        const double deficit = opp - own;
        if (deficit > 0.2 * opp) {
            moves = 50;
        } else if (deficit > 0.1 * opp) {
            moves = 40;
        } else if (deficit > 0.05 * opp) {
            moves = 35;
        }
    }
    if (own > opp) {
        const double lead = own - opp;
        if (lead > 0.2 * own) {
            moves -= 15;
        } else if (lead > 0.1 * own) {
            moves -= 10;
        } else if (lead > 0.05 * own) {
            moves -= 5;
        }
    }
    const bool nearlyOut = clock.ownTime <= CentisecondsPerMinute && clock.ownIncrement < 300;
    return nearlyOut ? moves + 30 : moves;
}

double gameBudget(const TimeControl& clock) {
    return withIncrement(static_cast<double>(clock.ownTime) / movesToSpread(clock), clock);
}

void setAllClocks(TimeControl& clock, std::uint32_t minutes) {
    clock.ownTime = clock.oppTime = clock.ownStart = clock.oppStart =
        minutes * CentisecondsPerMinute;
}

}  // namespace

void TimeControl::setConventional(std::uint32_t moves, std::uint32_t minutes) {
    *this = {};
    clockGiven = true;
    kind = ClockKind::Conventional;
    movesPerSession = moves;
    setAllClocks(*this, minutes);
}

void TimeControl::setIncrement(std::uint32_t minutes, std::uint32_t seconds) {
    *this = {};
    clockGiven = true;
    kind = ClockKind::Increment;
    setAllClocks(*this, minutes);
    ownIncrement = oppIncrement = seconds * 100;
}

void TimeControl::setSuddenDeath(std::uint32_t minutes) {
    *this = {};
    clockGiven = true;
    kind = ClockKind::SuddenDeath;
    setAllClocks(*this, minutes);
}

void TimeControl::setFixedTime(std::uint32_t centiseconds) {
    *this = {};
    clockGiven = true;
    kind = ClockKind::FixedTime;
    fixedTime = oppFixedTime = centiseconds;
}

void TimeControl::setDefault() { setConventional(40, 5); }

std::uint32_t TimeControl::AllocateTime() const {
    if (fixedTime != 0) return fixedTime;
    if (movesPerSession != 0) return static_cast<std::uint32_t>(conventionalBudget(*this));
    return static_cast<std::uint32_t>(gameBudget(*this));
}

bool TimeControl::ExtendTime() {
    if (movesPerSession != 0) {
        const std::uint64_t need =
            std::max<std::uint64_t>((movesLeft + std::uint64_t{1}) * allocated, 1000);
        if (ownTime < need) return false;
    } else {
        const std::uint64_t need = std::max<std::uint64_t>(std::uint64_t{allocated} * 2, 6000);
        if (ownTime + std::uint64_t{ownIncrement} < need) return false;
    }
    allocated *= 2;
    return true;
}

std::uint32_t centiseconds() { return static_cast<std::uint32_t>(platform().milliseconds() / 10); }

}  // namespace brivok
