#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "schedule.h"

/// The steps of a run, each of which leaves a table finished or as it was. A table is finished when
/// its record stands, which is written last, and its files are as recorded.
namespace brivok::tables {

/// What is found in a folder without reading the table.
enum class Standing {
    Missing,     ///< or some of its files are
    Unrecorded,  ///< all files are there, but no record
    Recorded,
    Misrecorded  ///< all files are there, but the record is damaged
};
[[nodiscard]] Standing standingOf(const std::filesystem::path& folder, int id);

/// What a job tells while it runs.
struct JobListener {
    std::function<void(const std::string& step)> onStep;        ///< a few words
    std::function<void(const std::string& outcome)> onOutcome;  ///< for the user's log
};

/// Compares the files of a recorded table with its record. Returns the first difference.
[[nodiscard]] std::optional<std::string> differenceFromRecord(const std::filesystem::path& folder,
                                                              int id);

/// Makes a table, unless it is there without a record and a sample of its entries is right; then
/// records it. The tables below it must be there; those in `trusted` are known to be as recorded.
/// Throws AppError.
void makeAndRecord(const std::filesystem::path& folder, const Job& job,
                   const std::vector<int>& trusted, const JobListener& listener);

/// Packs a table, records that, and removes the plain files. Throws AppError.
void packAndRecord(const std::filesystem::path& folder, const Job& job,
                   const JobListener& listener);

}  // namespace brivok::tables
