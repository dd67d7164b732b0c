#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "../common/files.h"
#include "observation.h"

namespace brivok {

/// Sorted runs of observations in one nameless temporary file: whatever ends the program, no file
/// stays behind where the system lets go of the name of an open one; elsewhere the destructor
/// removes it.
class RunFile {
public:
    struct Run {
        std::uint64_t first = 0;  ///< index of its first observation in the file
        std::uint64_t count = 0;
    };

    /// The file is made in the folder of `output`. Throws AppError when that takes none.
    explicit RunFile(const std::filesystem::path& output);
    RunFile(const RunFile&) = delete;
    RunFile& operator=(const RunFile&) = delete;
    ~RunFile();

    /// Appends a run. Throws AppError when the disk is full.
    void append(std::span<const Observation> run);

    /// Reads on in a run: as many of its next observations as `room` holds and the run has. Takes
    /// them off the run and returns their number.
    [[nodiscard]] std::size_t read(Run& run, std::span<Observation> room);

    [[nodiscard]] const std::vector<Run>& runs() const { return allRuns; }

private:
    FreshFile fresh;
    bool nameless = false;
    std::vector<Run> allRuns;
};

}  // namespace brivok
