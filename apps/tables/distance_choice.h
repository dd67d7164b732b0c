#pragma once

#include <cstddef>

#include "datacomp_symbols.h"

namespace brivok::tables {

/// The best distances for a file, judged by a sample of its blocks. Distance 1 is always included.
/// The others are added one by one from `candidateCount` frequent ones, at least SlotCount: each
/// time the one that seems to shorten a rough parse of the sample most (greedy choice with lazy
/// re-evaluation: Minoux 1978).
[[nodiscard]] Distances chooseDistances(ByteSpan sample, std::size_t candidateCount,
                                        unsigned threads);

}  // namespace brivok::tables
