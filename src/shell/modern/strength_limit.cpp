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
/// multiplies the nodes by the same factor.
constexpr Anchor Anchors[] = {
    {LowestElo, 60}, {1200, 200},    {1400, 700},     {1600, 2'500},
    {1800, 9'000},   {2000, 32'000}, {2200, 120'000}, {HighestElo, 450'000},
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
