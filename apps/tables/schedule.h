#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "table_costs.h"

namespace brivok::tables {

/// What is to be done about a table in a run.
struct TablePlan {
    int id = 0;
    bool check = false;  ///< that it is as recorded
    bool make = false;   ///< otherwise it is there
    bool adopt = false;  ///< make it only if a sample of the files that are there is wrong
    bool pack = false;   ///< and remove the plain files
    TableCosts costs{};
};

/// A step of a run.
struct Job {
    enum class Kind { Check, Make, Pack };

    int id = 0;
    Kind kind = Kind::Make;
    unsigned threads = 1;
    std::uint64_t memory = 0;  ///< bytes
    double seconds = 0;        ///< of processor time
    bool usesScratch = false;  ///< keeps distances on disk

    bool operator==(const Job& other) const { return id == other.id && kind == other.kind; }
};

/// What a run may use at a time.
struct Limits {
    std::uint64_t memory = 0;  ///< bytes
    unsigned threads = 1;
};

/// The order of a run's jobs. A table is made when those below it are, and packed when all that one
/// move leads from to it are made. As many jobs as memory and threads allow run side by side, and
/// share the threads: that leaves fewer threads idle than several of them at one table. Packing
/// comes first, as it frees disk; otherwise the order is that of the plans. That of tablesToMake()
/// brings the tables that read a file close together; to start with what most of the remaining work
/// waits for would save no time with the tables of five men, and take more disk.
class Schedule {
public:
    /// The plans must be in an order in which each table comes after those below it. Those below
    /// that have no plan are there. No job may need more memory than the limit.
    Schedule(const std::vector<TablePlan>& plans, Limits itsLimits);

    /// Starts a job, if one can start while the others run.
    [[nodiscard]] std::optional<Job> start();

    void finish(const Job& job);

    [[nodiscard]] bool isFinished() const { return finished == steps.size(); }

    /// Processor seconds of the jobs that are not finished.
    [[nodiscard]] double secondsLeft() const;

private:
    enum class State { Waiting, Running, Finished };

    struct Step {
        Job job;
        State state = State::Waiting;
        std::vector<std::size_t> after{};  ///< steps that must be finished before
    };

    void add(const TablePlan& plan, Job::Kind kind, std::vector<std::size_t> after = {});
    [[nodiscard]] bool isReady(const Step& step) const;

    std::vector<Step> steps;
    Limits free;
    std::size_t finished = 0;
};

/// What a run will take.
struct Forecast {
    std::size_t making = 0;    ///< tables
    std::size_t adopting = 0;  ///< tables
    std::size_t packing = 0;   ///< tables
    double seconds = 0;        ///< by the clock
    std::uint64_t memory = 0;  ///< bytes, at the peak
    std::uint64_t disk = 0;    ///< bytes, at the peak, beyond those in use at the start
};
[[nodiscard]] Forecast forecastOf(const std::vector<TablePlan>& plans, const Limits& limits);

}  // namespace brivok::tables
