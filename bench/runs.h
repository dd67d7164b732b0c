#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "measurement.h"
#include "search/searcher.h"
#include "signature.h"

namespace brivok {

/// A fixed depth below the value that means none.
inline constexpr int MaxBenchDepth = NoFixedDepth - 1;

/// A deeper tree takes hours.
inline constexpr int MaxBenchPerftDepth = 6;

/// Every so many positions of the signature one whose time to depth is taken: opening, middle game
/// and endgame.
inline constexpr std::size_t DepthPositionStep = 10;

/// What one position has taken.
struct PositionRun {
    TestPosition position;
    Measurement measured;             ///< to the full depth
    std::vector<Measurement> depths;  ///< from depth 1 on; of a run of times to depth only
};

/// What one command of brivok-bench has measured.
struct Run {
    int depth;
    std::vector<PositionRun> positions;
    std::optional<std::uint64_t> knownNodes;  ///< what the total must be, if that is known

    [[nodiscard]] Measurement total() const;
    [[nodiscard]] bool isRight() const { return !knownNodes || total().nodes == *knownNodes; }
};

/// Searches of the signature. Making the tables is not part of the time.
[[nodiscard]] Run runSignature(int depth);

/// Counts of the legal move tree; nodes are the leaves at `depth`. Throws an exception at a
/// position that cannot be played from.
[[nodiscard]] Run runPerft(std::span<const TestPosition> positions, int depth);

/// Time to depth. Each depth is a search of its own with fresh tables: it does exactly what a
/// deeper search has done when it reaches that depth.
[[nodiscard]] Run runDepths(int depth);

}  // namespace brivok
