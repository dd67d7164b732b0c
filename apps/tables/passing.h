#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "conversion_worths.h"
#include "outcome.h"
#include "row.h"

namespace brivok::tables {

/// A position with an en passant square. Its moves are those of the plain position of the same men,
/// and captures in passing; so it is worth the better of the two, unless the plain position has no
/// moves. Positions are numbered within their block.
struct Passing {
    std::uint32_t plain = 0;         ///< the position without the en passant square
    std::uint32_t origin = 0;        ///< the one before the double step
    Worth capture = NoWorth;         ///< of the best capture in passing; NoWorth if all are illegal
    bool captureIsOnlyMove = false;  ///< set by the retrograde analysis

    /// What the position is worth if the plain one is worth so much.
    template <typename W>
    [[nodiscard]] W worth(W ofPlain) const {
        const W ofCapture = widened<W>(capture);
        return captureIsOnlyMove ? ofCapture : std::max(ofCapture, ofPlain);
    }
};

/// Appends the positions of a row with `mover` to move that have an en passant square.
void appendPassings(const Row& row, unsigned mover, const ConversionWorths& conversions,
                    std::vector<Passing>& passings);

}  // namespace brivok::tables
