#include "runs.h"

#include "../apps/book/position.h"
#include "board/board.h"
#include "movegen/legal_moves.h"
#include "movegen/perft.h"

namespace brivok {

namespace {

Measurement measureSearch(const TestPosition& position, int depth) {
    preparePosition(position);
    return measure([depth] { return searchNodes(depth); });
}

/// Perft counts to this depth fit in 32 bits: no position has more than 218 moves.
constexpr std::size_t PliesInCount = 4;

/// Leaves of the move tree from the position on the board.
std::uint64_t perftLeaves(std::size_t depth) {
    if (depth <= PliesInCount) {
        return countPerft(theBoard, depth)[depth];
    }
    std::uint64_t leaves = 0;
    forEachLegalMove(theBoard, [&](Move) { leaves += perftLeaves(depth - 1); });
    return leaves;
}

}  // namespace

Measurement Run::total() const {
    Measurement sum;
    for (const PositionRun& run : positions) sum += run.measured;
    return sum;
}

Run runSignature(int depth) {
    Run run{depth, {}, {}};
    if (depth == SignatureDepth) run.knownNodes = SignatureNodes;
    for (const TestPosition& position : signaturePositions()) {
        run.positions.push_back({position, measureSearch(position, depth), {}});
    }
    return run;
}

Run runPerft(std::span<const TestPosition> positions, int depth, bool bulk) {
    Run run{depth, {}, {}};
    for (const TestPosition& position : positions) {
        settings.variant = position.variant;
        setPositionOrThrow(theBoard, position.fen);
        run.positions.push_back({position,
                                 measure([depth, bulk] {
                                     const auto plies = static_cast<std::size_t>(depth);
                                     return bulk ? countLeaves(theBoard, plies)
                                                 : perftLeaves(plies);
                                 }),
                                 {}});
    }
    return run;
}

Run runDepths(int depth) {
    Run run{depth, {}, {}};
    const std::span<const TestPosition> all = signaturePositions();
    for (std::size_t i = 0; i < all.size(); i += DepthPositionStep) {
        PositionRun of{all[i], {}, {}};
        for (int d = 1; d <= depth; ++d) of.depths.push_back(measureSearch(all[i], d));
        of.measured = of.depths.back();
        run.positions.push_back(of);
    }
    return run;
}

}  // namespace brivok
