#include "making_watch.h"

#include <sys/resource.h>

#include <cstdint>
#include <fstream>
#include <string>

namespace brivok::tables {
namespace {

/// Bytes in memory at the peak since it was last reset. Linux keeps it in kilobytes. Elsewhere it
/// is that since the start of the process.
std::uint64_t peakBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (std::uint64_t kilobytes = 0; word == "VmHWM:" && status >> kilobytes) {
            return kilobytes * 1024;
        }
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

}  // namespace

MakingWatch::MakingWatch() : start(std::chrono::steady_clock::now()), processorStart(std::clock()) {
    std::ofstream("/proc/self/clear_refs") << '5';  // resets the peak on Linux
}

Making MakingWatch::finish(unsigned threads) const {
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    return {.seconds = seconds.count(),
            .processorSeconds = static_cast<double>(std::clock() - processorStart) / CLOCKS_PER_SEC,
            .threads = threads,
            .peakBytes = peakBytes()};
}

}  // namespace brivok::tables
