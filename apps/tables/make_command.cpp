#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <system_error>

#include "../common/files.h"
#include "commands.h"
#include "material.h"
#include "report_text.h"
#include "run_schedule.h"
#include "schedule.h"
#include "table_jobs.h"
#include "table_record.h"
#include "table_store.h"
#include "targets.h"

namespace brivok::tables {
namespace {

constexpr std::uint64_t Megabyte = 1'000'000;

std::string nameOf(int id) { return std::string(descriptorOf(id).signature()); }

bool contains(const std::vector<int>& ids, int id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

/// Why no table can be made from one; empty if it is recorded.
std::string lackOf(Standing standing) {
    switch (standing) {
        case Standing::Missing: return "is missing";
        case Standing::Unrecorded: return "has no record: make it first";
        case Standing::Misrecorded: return "has a damaged record: make it first";
        case Standing::Recorded: break;
    }
    return "";
}

/// A run of `make`.
class MakeRun {
public:
    explicit MakeRun(const MakeOptions& itsOptions)
        : options(itsOptions),
          folder(options.folder),
          limits{.memory = options.megabytes * Megabyte, .threads = options.threads} {}

    void run() {
        const std::vector<int> ids =
            options.only ? tablesNamed(options.targets) : tablesToMake(options.targets);
        prepareFolder();
        removeAbandoned();
        check(ids);
        std::vector<TablePlan> plans;
        for (const int id : ids) addPlan(id, plans);
        if (options.only) requireTablesBelow(plans);
        if (plans.empty()) return;
        requireResources(plans);
        (void)runSchedule(folder, plans, limits, right);
        removeAbandoned();  // those of a run that was still being ended at the start
    }

private:
    void prepareFolder() const {
        std::error_code failure;
        std::filesystem::create_directories(folder, failure);
        if (failure) fail(folder, failure.message());
    }

    void removeAbandoned() const {
        removeAbandonedFiles(folder, [](const std::string& name) {
            if (tableFileOf(name)) return true;
            for (int id = 1; id < TableCount; ++id) {
                if (name == recordPath({}, id)) return true;
            }
            return false;
        });
    }

    /// Compares the recorded ones of the tables with their records.
    void check(const std::vector<int>& ids) {
        std::vector<TablePlan> plans;
        for (const int id : ids) {
            if (contains(right, id) || standingOf(folder, id) != Standing::Recorded) continue;
            plans.push_back({.id = id, .check = true, .costs = costsOf(id)});
        }
        const Checked checked = runSchedule(folder, plans, limits);
        right.insert(right.end(), checked.right.begin(), checked.right.end());
        wrong.insert(wrong.end(), checked.wrong.begin(), checked.wrong.end());
    }

    void addPlan(int id, std::vector<TablePlan>& plans) const {
        const bool isThere = contains(right, id);
        if (isThere) std::printf("%s: already there\n", nameOf(id).c_str());
        TablePlan plan{.id = id,
                       .make = !isThere,
                       .adopt = !isThere && isWithoutRecord(id),
                       .pack = options.compress && (!isThere || hasPlainFile(id)),
                       .costs = costsOf(id)};
        if (plan.costs.memory > limits.memory) plan.costs = costsWithScratch(id);
        if (plan.make || plan.pack) plans.push_back(plan);
    }

    [[nodiscard]] bool isWithoutRecord(int id) const {
        const Standing standing = standingOf(folder, id);
        return standing == Standing::Unrecorded || standing == Standing::Misrecorded;
    }

    [[nodiscard]] bool hasPlainFile(int id) const {
        for (unsigned side = 0; side < filesOf(id); ++side) {
            for (unsigned part = 0; part < partsOf(id, side); ++part) {
                if (std::filesystem::exists(folder / tableFileName(id, side, part))) return true;
            }
        }
        return false;
    }

    /// Refuses tables whose tables below are missing, damaged, or not known to be right.
    void requireTablesBelow(const std::vector<TablePlan>& plans) {
        std::vector<int> needed;
        for (const TablePlan& plan : plans) {
            if (!plan.make) continue;
            for (const int below : tablesBelow(plan.id)) {
                const bool isMade = std::any_of(
                    plans.begin(), plans.end(),
                    [below](const TablePlan& other) { return other.id == below && other.make; });
                if (isMade) continue;
                const std::string lack = lackOf(standingOf(folder, below));
                if (!lack.empty()) {
                    throw AppError(nameOf(plan.id) + ": needs " + nameOf(below) + ", which " +
                                   lack);
                }
                needed.push_back(below);
            }
        }
        check(needed);
        for (const int below : needed) {
            if (contains(wrong, below)) throw AppError(nameOf(below) + ": must be made again");
        }
    }

    /// Tells what the run takes, and refuses it if that is more than there is.
    void requireResources(const std::vector<TablePlan>& plans) const {
        for (const TablePlan& plan : plans) {
            if (plan.make && plan.costs.memory > limits.memory) {
                throw AppError(nameOf(plan.id) + ": needs " + sizeText(plan.costs.memory) +
                               " of memory, and may use " + sizeText(limits.memory) +
                               " (--memory)");
            }
        }
        const Forecast forecast = forecastOf(plans, limits);
        std::string text;
        if (forecast.making != 0) text = std::to_string(forecast.making) + " to make, ";
        if (forecast.adopting != 0) text += std::to_string(forecast.adopting) + " to sample, ";
        if (forecast.packing != 0) text += std::to_string(forecast.packing) + " to pack, ";
        std::printf("Tables: %sabout %s, %s of memory, %s of disk\n", text.c_str(),
                    durationText(forecast.seconds).c_str(), sizeText(forecast.memory).c_str(),
                    sizeText(forecast.disk).c_str());
        std::fflush(stdout);
        std::error_code failure;
        const std::filesystem::space_info space = std::filesystem::space(folder, failure);
        if (failure) fail(folder, failure.message());
        if (forecast.disk > space.available) {
            fail(folder, "needs " + sizeText(forecast.disk) + " of disk, and has " +
                             sizeText(space.available));
        }
        const NewFile probe(recordPath(folder, plans.front().id));  // fails if it cannot be written
    }

    const MakeOptions& options;
    std::filesystem::path folder;
    Limits limits;
    std::vector<int> right;  ///< as recorded
    std::vector<int> wrong;
};

}  // namespace

void makeTables(const MakeOptions& options) { MakeRun(options).run(); }

}  // namespace brivok::tables
