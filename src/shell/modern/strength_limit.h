#pragma once

#include <cstdint>

/// @file
/// Weaker play: a search that may count only so many nodes.
namespace brivok {

inline constexpr int LowestElo = 1000;   ///< the least that UCI_Elo can be set to
inline constexpr int HighestElo = 2300;  ///< the most that UCI_Elo can be set to

/// Nodes for a move at this rating, which is first clamped to LowestElo and HighestElo. Grows with
/// the rating.
[[nodiscard]] std::uint32_t nodesOfElo(int elo);

}  // namespace brivok
