#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "measurement.h"
#include "search/searcher.h"
#include "signature.h"

namespace brivok {

/// The largest value of `maxIteration` that means a fixed depth.
inline constexpr int MaxBenchDepth = NoFixedDepth - 1;

/// Deeper trees take hours.
inline constexpr int MaxBenchPerftDepth = 6;

/// Time to depth is measured at every position of the signature with an index divisible by this:
/// opening, middle game and endgame.
inline constexpr std::size_t DepthPositionStep = 10;

struct PositionRun {
    TestPosition position;
    Measurement measured;             ///< to the full depth
    std::vector<Measurement> depths;  ///< from depth 1 on; only filled by runDepths()
};

/// The result of one command of brivok-bench.
struct Run {
    int depth;
    std::vector<PositionRun> positions;
    std::optional<std::uint64_t> knownNodes;  ///< expected total, if known

    [[nodiscard]] Measurement total() const;
    [[nodiscard]] bool isRight() const { return !knownNodes || total().nodes == *knownNodes; }
};

/// Searches the signature positions. The time does not include allocating tables.
[[nodiscard]] Run runSignature(int depth);

/// Counts legal move trees; nodes are the leaves at `depth`, which `bulk` counts without making
/// them. Throws an exception for a position that cannot be played from.
[[nodiscard]] Run runPerft(std::span<const TestPosition> positions, int depth, bool bulk);

/// Time to depth. Each depth is a separate search with fresh tables, which does exactly what a
/// deeper search has done when it reaches that depth.
[[nodiscard]] Run runDepths(int depth);

}  // namespace brivok
