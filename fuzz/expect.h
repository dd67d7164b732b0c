#pragma once

#include <cstdio>
#include <cstdlib>

namespace brivok::fuzz {

/// Aborts with the message unless the condition holds.
inline void expect(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "expected: %s\n", what);
    std::abort();
}

}  // namespace brivok::fuzz
