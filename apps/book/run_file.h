#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "../common/files.h"
#include "observation.h"

namespace brivok {

/// Sorted runs of observations in one anonymous temporary file. Where the system can unlink an open
/// file, nothing is left behind however the program ends; elsewhere the destructor removes the
/// file.
class RunFile {
public:
    struct Run {
        std::uint64_t first = 0;  ///< index of the run's next observation in the file
        std::uint64_t count = 0;
    };

    /// Creates the file in the folder of `output`. Throws AppError if that fails.
    explicit RunFile(const std::filesystem::path& output);
    RunFile(const RunFile&) = delete;
    RunFile& operator=(const RunFile&) = delete;
    ~RunFile();

    /// Appends a run. Throws AppError if the disk is full.
    void append(std::span<const Observation> run);

    /// Reads the next observations of a run, as many as it has and `room` can hold, and removes
    /// them from the run. Returns their number.
    [[nodiscard]] std::size_t read(Run& run, std::span<Observation> room);

    [[nodiscard]] const std::vector<Run>& runs() const { return allRuns; }

private:
    FreshFile fresh;
    bool nameless = false;
    std::vector<Run> allRuns;
};

}  // namespace brivok
