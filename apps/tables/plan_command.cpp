#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include "../common/app_error.h"
#include "../common/files.h"
#include "commands.h"
#include "plan.h"
#include "report_text.h"

namespace brivok::tables {
namespace {

namespace fs = std::filesystem;

/// A program that runs jobs.
struct Runner {
    std::string_view name;
    const char* file;  ///< the plan's name
    std::string (*write)(const Plan&);
    bool isScript;
};

constexpr std::array Runners = {
    Runner{"make", "Makefile", makefileOf, false},
    Runner{"ninja", "build.ninja", ninjaFileOf, false},
    Runner{"slurm", "submit", slurmScriptOf, true},
};

const Runner& runnerNamed(std::string_view name) {
    const auto* const found = std::find_if(Runners.begin(), Runners.end(),
                                           [name](const Runner& one) { return one.name == name; });
    if (found == Runners.end())
        throw AppError("--for " + std::string(name) + ": not make, ninja or slurm");
    return *found;
}

/// For jobs, which run in other folders: the running program if none is given. A bare name stays,
/// and is found by PATH.
std::string programOr(const fs::path& given) {
    std::error_code unknown;
    fs::path program = given;
    if (given.empty()) program = fs::read_symlink("/proc/self/exe", unknown);
    if (given.has_parent_path()) program = fs::absolute(given);
    if (program.empty()) throw AppError("name the program that jobs run with --program");
    std::string text = program.string();
    if (text.find('\n') != std::string::npos) throw AppError("--program: not of one line");
    return text;
}

/// Throws AppError if a file stands there that is no plan.
void checkReplaceable(const fs::path& file) {
    if (!fs::exists(file)) return;
    std::string begin(100, '\0');
    std::ifstream(file).read(begin.data(), static_cast<std::streamsize>(begin.size()));
    if (begin.find(PlanMark) == std::string::npos) fail(file, "is there and is no plan");
}

void write(const fs::path& file, const std::string& text, bool isScript) {
    checkReplaceable(file);
    NewFile fresh(file);
    fresh.write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    fresh.finish();
    if (!isScript) return;
    using fs::perms;
    std::error_code failure;
    fs::permissions(file, perms::owner_exec | perms::group_exec | perms::others_exec,
                    fs::perm_options::add, failure);
    if (failure) fail(file, failure.message());
}

void describe(const fs::path& file, const Plan& plan) {
    double seconds = 0;
    std::uint64_t memory = 0;
    std::uint64_t disk = 0;
    for (const PlannedTable& table : plan.tables) {
        seconds += table.seconds;
        memory = std::max(memory, table.memory);
        disk += table.disk;
    }
    std::printf("%s: %zu jobs, about %s of processor time, up to %s of memory each, %s of tables\n",
                file.string().c_str(), plan.tables.size(), durationText(seconds).c_str(),
                sizeText(memory).c_str(), sizeText(disk).c_str());
}

}  // namespace

void writePlan(const PlanOptions& options) {
    const Runner& runner = runnerNamed(options.runner);
    Plan plan{.tables = tablesToPlan(options.targets, options.compress),
              .program = programOr(options.program),
              .threads = options.threads,
              .compress = options.compress};
    plan.jobsAtATime = std::min(jobsThatFit(plan.tables, options.megabytes * 1'000'000),
                                std::max(1U, allProcessors() / options.threads));
    std::error_code failure;
    fs::create_directories(options.folder, failure);
    if (failure) fail(options.folder, failure.message());
    const fs::path file = options.folder / runner.file;
    write(file, runner.write(plan), runner.isScript);
    describe(file, plan);
}

}  // namespace brivok::tables
