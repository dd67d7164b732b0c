#include "shell/modern/strength_limit.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace brivok {

namespace {

struct Anchor {
    int elo;
    double nodes;
};

/// Ratings and the nodes that earn them, in rising order. Between two anchors each point of Elo
/// multiplies the nodes by the same factor. The differences are those of tests/soak/levels.py, the
/// level of them all is explained in docs/strength.md.
constexpr Anchor Anchors[] = {
    {986, 300}, {1188, 1'000}, {1448, 3'000}, {1738, 10'000}, {2009, 30'000}, {2300, 100'000},
};

}  // namespace

std::uint32_t nodesOfElo(int elo) {
    elo = std::clamp(elo, LowestElo, HighestElo);
    // The first anchor has no other below it.
    const Anchor* above = std::find_if(std::begin(Anchors) + 1, std::end(Anchors) - 1,
                                       [elo](const Anchor& anchor) { return anchor.elo >= elo; });
    const Anchor& below = *(above - 1);
    const double share = static_cast<double>(elo - below.elo) / (above->elo - below.elo);
    return static_cast<std::uint32_t>(
        std::lround(below.nodes * std::pow(above->nodes / below.nodes, share)));
}

}  // namespace brivok
