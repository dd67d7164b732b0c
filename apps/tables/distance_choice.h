#pragma once

#include "datacomp_symbols.h"

namespace brivok::tables {

/// The distances that serve a file best, judged by a sample of its blocks. Distance 1 is always
/// among them; then one after the other joins which shortens a rough parse of the sample most
/// (greedy choice with lazy re-evaluation: Minoux 1978).
[[nodiscard]] Distances chooseDistances(ByteSpan sample, unsigned threads);

}  // namespace brivok::tables
