#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A plan: tables to make as a graph of jobs, for a program that runs jobs. Each job makes a table,
/// in a process of its own.
namespace brivok::tables {

struct PlannedTable {
    int id = 0;
    std::vector<int> after;    ///< the tables that must be finished before
    double seconds = 0;        ///< of processor time
    std::uint64_t memory = 0;  ///< bytes
    std::uint64_t disk = 0;    ///< bytes of the files in the end
};

struct Plan {
    std::vector<PlannedTable> tables;  ///< each after those that it waits for
    std::string program;               ///< that jobs run: in any folder, a name of one line
    unsigned threads = 1;              ///< of each job
    bool compress = false;             ///< pack each table when it is made
    unsigned jobsAtATime = 1;          ///< on one machine
};

/// What tablesToMake() names, which may throw AppError. First come tables that the most work waits
/// for, so that jobs can start in this order.
[[nodiscard]] std::vector<PlannedTable> tablesToPlan(const std::vector<std::string>& targets,
                                                     bool compress);

/// How many jobs fit into this many bytes of memory, whichever they are; at least 1.
[[nodiscard]] unsigned jobsThatFit(const std::vector<PlannedTable>& tables, std::uint64_t memory);

/// The plan as a file for make, ninja or Slurm (a script that submits the jobs). The file works
/// from the folder of the tables: it names no folder but the program's.
[[nodiscard]] std::string makefileOf(const Plan& plan);
[[nodiscard]] std::string ninjaFileOf(const Plan& plan);
[[nodiscard]] std::string slurmScriptOf(const Plan& plan);

/// Stands at the beginning of each of these files, if not after a line "#!".
inline constexpr std::string_view PlanMark = "# Written by brivok-tables plan";

}  // namespace brivok::tables
