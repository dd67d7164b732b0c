#pragma once

#include "datacomp_symbols.h"

namespace brivok::tables {

/// The best distances for a file, judged by a sample of its blocks. Distance 1 is always included.
/// The others are added one by one, each time the distance that shortens a rough parse of the
/// sample most (greedy choice with lazy re-evaluation: Minoux 1978).
[[nodiscard]] Distances chooseDistances(ByteSpan sample, unsigned threads);

}  // namespace brivok::tables
