#pragma once

#include <cstdint>

namespace brivok {

/// Megabytes of each hash table, all of them powers of two: the tables have as many slots, so other
/// sizes would be rounded down.
struct HashSizes {
    std::uint32_t main = 1;
    std::uint32_t evaluations = 1;
    std::uint32_t pawns = 1;

    bool operator==(const HashSizes&) const = default;
};

/// The sizes, together at most this many megabytes, but at least one each and none above `most`.
/// The main table gets as much as leaves something for the others, then the one of evaluations.
[[nodiscard]] HashSizes spreadMemory(std::uint32_t megabytes, const HashSizes& most);

/// Whether the system grants this much memory, beyond what is in use.
[[nodiscard]] bool isMemoryGranted(std::uint32_t megabytes);

}  // namespace brivok
