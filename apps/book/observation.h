#pragma once

#include <cstdint>

#include "board/types.h"
#include "book/annotation.h"
#include "pgn_reader.h"

namespace brivok {

/// The games in which a move to the position `key` was made by one side, ended in one way and got
/// one annotation. The unit in which a book is gathered: equal ones are added up at any time and in
/// any order, and nothing about them is lost before all are there.
struct Observation {
    std::uint64_t key = 0;
    std::uint32_t games = 0;
    /// From the low bits up: annotation value, GameResult (2 bits), the side that moved (1).
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
