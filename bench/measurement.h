#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>

namespace brivok {

/// Nodes and the time that they took. Rates are by processor time, which tells the same on a busy
/// machine; the engine computes on one thread.
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

    /// 0 for work too short for the clock.
    [[nodiscard]] double nodesPerSecond() const {
        return processorSeconds > 0 ? static_cast<double>(nodes) / processorSeconds : 0;
    }
};

/// Carries out a work that returns its nodes.
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
