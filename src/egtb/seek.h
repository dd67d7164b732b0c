#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace brivok {

/// Seeks to `offset` from the start of the file. Takes several steps where long, the type that
/// fseek() uses, has 32 bits.
[[nodiscard]] inline bool seekTo(std::FILE* file, std::uint64_t offset) {
    constexpr std::uint64_t LargestStep = std::numeric_limits<long>::max();
    int origin = SEEK_SET;
    do {
        const std::uint64_t step = std::min(offset, LargestStep);
        if (std::fseek(file, static_cast<long>(step), origin) != 0) return false;
        offset -= step;
        origin = SEEK_CUR;
    } while (offset != 0);
    return true;
}

}  // namespace brivok
