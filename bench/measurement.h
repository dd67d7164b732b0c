#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>

namespace brivok {

/// Nodes and the time they took. Rates use processor time, which a busy machine does not distort;
/// the engine runs on one thread.
struct Measurement {
    std::uint64_t nodes = 0;
    double processorSeconds = 0;
    double wallSeconds = 0;

    Measurement& operator+=(const Measurement& other) {
        nodes += other.nodes;
        processorSeconds += other.processorSeconds;
        wallSeconds += other.wallSeconds;
        return *this;
    }

    /// 0 if the work was too short for the clock.
    [[nodiscard]] double nodesPerSecond() const {
        return processorSeconds > 0 ? static_cast<double>(nodes) / processorSeconds : 0;
    }
};

/// Times `work`, which returns its node count.
template <typename Work>
[[nodiscard]] Measurement measure(Work work) {
    Measurement result;
    const auto wallStart = std::chrono::steady_clock::now();
    const std::clock_t start = std::clock();
    result.nodes = work();
    result.processorSeconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - wallStart;
    result.wallSeconds = wall.count();
    return result;
}

}  // namespace brivok
