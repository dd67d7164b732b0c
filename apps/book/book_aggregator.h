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

/// Adds up the observations of any number of games within a fixed amount of memory. They gather in
/// a buffer; a full one is sorted and equal ones are added up, and if that has not made much room
/// it goes to a temporary file as a sorted run. At the end all runs are merged. The outcome does
/// not depend on the order of the games or on the size of the memory.
class BookAggregator {
public:
    /// Bytes that the least sensible buffer and its merge take.
    static constexpr std::size_t LeastMemory = std::size_t{1} << 20U;

    /// The temporary file, if there is need for one, lies in the folder of `output`; a folder that
    /// takes none is a AppError here and now.
    BookAggregator(const std::filesystem::path& output, std::size_t memoryBytes);

    void add(std::span<const Observation> observations);

    /// What is known of one position, and who moved to it.
    using Sink = std::function<void(const BookRecord&, Side mover)>;

    /// Hands every position to the sink once, by rising key. Ends the gathering.
    void finish(const Sink& sink);

    [[nodiscard]] std::size_t runCount() const { return runs.runs().size(); }

private:
    /// Sorts the buffer and adds up equal observations.
    void condense();

    RunFile runs;
    std::size_t capacity;  ///< observations in the buffer
    std::size_t mergeMemory;
    std::vector<Observation> buffer;
};

}  // namespace brivok
