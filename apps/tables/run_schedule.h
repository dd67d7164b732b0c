#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "schedule.h"

namespace brivok::tables {

/// The tables that were compared with their records.
struct Checked {
    std::vector<int> right{};
    std::vector<int> wrong{};
};

/// Runs the jobs of the plans in a folder, each in a process of its own, and tells about them: a
/// line of standard output for each table that is made, found, or found wrong, and the progress
/// with the time left. Tables in `trusted` are known to be as recorded.
///
/// If a job fails it starts no more, waits for those that run, and throws AppError. Throws
/// Interrupted if the user gives up; all jobs are ended then.
Checked runSchedule(const std::filesystem::path& folder, const std::vector<TablePlan>& plans,
                    const Limits& limits, std::vector<int> trusted = {});

}  // namespace brivok::tables
