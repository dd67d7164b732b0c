#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "book/opening_book.h"
#include "observation.h"
#include "run_file.h"

namespace brivok {

/// Sums up the observations of any number of games in a fixed amount of memory. Observations
/// collect in a buffer. When it is full, it is sorted and equal observations are merged; if that
/// frees little room, the buffer goes to a temporary file as a sorted run. At the end all runs are
/// merged. The result depends neither on the order of the games nor on the size of the memory.
class BookAggregator {
public:
    /// Least sensible size of the buffer and its merge, in bytes.
    static constexpr std::size_t LeastMemory = std::size_t{1} << 20U;

    /// The temporary file, if needed, is created in the folder of `output`. Throws AppError at once
    /// if that folder is not writable.
    BookAggregator(const std::filesystem::path& output, std::size_t memoryBytes);

    void add(std::span<const Observation> observations);

    /// Receives the sums for one position, and the side that moved to it.
    using Sink = std::function<void(const BookRecord&, Side mover)>;

    /// Passes every position to the sink once, by rising key. Nothing can be added afterwards.
    void finish(const Sink& sink);

    [[nodiscard]] std::size_t runCount() const { return runs.runs().size(); }

private:
    /// Sorts the buffer and merges equal observations.
    void condense();

    RunFile runs;
    std::size_t capacity;  ///< of the buffer, in observations
    std::size_t mergeMemory;
    std::vector<Observation> buffer;
};

}  // namespace brivok
