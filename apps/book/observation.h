#pragma once

#include <cstdint>

#include "board/types.h"
#include "book/annotation.h"
#include "pgn_reader.h"

namespace brivok {

/// The number of games in which one side made a move to the position `key`, with one result and one
/// annotation of the move. Books are collected in these units: equal ones can be summed at any time
/// and in any order without losing information.
struct Observation {
    std::uint64_t key = 0;
    std::uint32_t games = 0;
    /// From the low bits up: annotation value, GameResult (2 bits), side that moved (1 bit).
    std::uint32_t what = 0;

    static constexpr unsigned ResultShift = Annotations.size();
    static constexpr unsigned MoverShift = ResultShift + 2;

    Observation() = default;
    Observation(std::uint64_t position, Side mover, GameResult result, std::uint32_t annotation)
        : key(position),
          games(1),
          what(annotation | static_cast<std::uint32_t>(result) << ResultShift |
               mover << MoverShift) {}

    [[nodiscard]] std::uint32_t annotation() const { return what & ((1U << ResultShift) - 1U); }
    [[nodiscard]] GameResult result() const {
        return static_cast<GameResult>(what >> ResultShift & 3U);
    }
    [[nodiscard]] Side mover() const { return static_cast<Side>(what >> MoverShift & 1U); }

    [[nodiscard]] bool sameAs(const Observation& other) const {
        return key == other.key && what == other.what;
    }
    [[nodiscard]] bool operator<(const Observation& other) const {
        return key != other.key ? key < other.key : what < other.what;
    }
};

}  // namespace brivok
