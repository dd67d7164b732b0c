#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace brivok::tables {

/// Calls work(begin, end) for pieces of 0 to count, on this many threads, including the current
/// one. Returns when all is done; everything written by the pieces is then visible. `work` must not
/// throw.
template <typename Work>
void inParallel(unsigned threads, std::uint64_t count, Work work, std::uint64_t piece = 1 << 16) {
    std::atomic<std::uint64_t> next = 0;
    const auto workOn = [&] {
        for (;;) {
            const std::uint64_t begin = next.fetch_add(piece);
            if (begin >= count) return;
            work(begin, std::min(count, begin + piece));
        }
    };
    const auto helpers = std::min<std::uint64_t>(std::max(threads, 1U) - 1, count / piece);
    std::vector<std::jthread> running;
    for (std::uint64_t i = 0; i < helpers; ++i) running.emplace_back(workOn);
    workOn();
}

}  // namespace brivok::tables
