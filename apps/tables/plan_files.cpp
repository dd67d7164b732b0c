#include <cmath>
#include <string_view>
#include <utility>

#include "egtb/descriptors.h"
#include "plan.h"
#include "table_store.h"

namespace brivok::tables {
namespace {

// Make and ninja take a table as finished when the file stands that a job writes last. They compare
// no times: a table stays right when one below it is made anew.

constexpr const char* Makefile =
    R"(# Written by brivok-tables plan. Run it in the folder of the tables:
#
#     make -j@AT_A_TIME@     as many jobs at a time as fit into the memory
#
# It makes each table whose file is missing here.
tables :=@TABLES@

.PHONY: all
all: $(tables)

# Make removes none of them when it is interrupted.
.PRECIOUS: $(tables)

$(tables):
	@COMMAND@

@JOBS@)";

constexpr const char* NinjaFile =
    R"(# Written by brivok-tables plan. Run it in the folder of the tables:
#
#     ninja
#
# It makes each table whose file is missing here.
ninja_required_version = 1.5

# As many jobs at a time as fit into the memory.
pool memory
  depth = @AT_A_TIME@

# What a generator made is not made again for a new command, and "ninja -t clean" keeps it.
rule table
  command = @COMMAND@
  description = $table
  generator = 1
  pool = memory

@JOBS@)";

constexpr const char* SlurmScript = R"sh(#!/usr/bin/env bash
# Written by brivok-tables plan. Submits a job for each table that this folder lacks:
#
#     ./submit [OPTION OF SBATCH...]     for all jobs, such as --partition=long or --mem=16G
#
# A job starts when those that it depends on have succeeded. After a failure run this again: it
# leaves out finished tables and those that have a job in the queue.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
folder=$(pwd -P)
options=("$@")
mkdir -p logs

# By table: its job in the queue.
declare -A job
queue=$(squeue --me --noheader --states=PENDING,CONFIGURING,RUNNING,SUSPENDED --format='%i %j %Z')
while read -r id name place; do
    if [[ $name == brivok-* && $place == "$folder" ]]; then job[${name#brivok-}]=$id; fi
done <<<"$queue"

is_finished() {
    @IS_FINISHED@
}

# What a job runs. Unless it is told to end (by a time limit, say), it goes back to the queue after a
# failure, at most twice.
job_script() {
    cat <<'END'
#!/usr/bin/env bash
table=${SLURM_JOB_NAME#brivok-}
@COMMAND@ && exit
code=$?
if ((code < 128 || code == 137)) && ((${SLURM_RESTART_COUNT:-0} < 2)); then
    scontrol requeue "$SLURM_JOB_ID"
fi
exit "$code"
END
}

# submit TABLE MEGABYTES MINUTES [TABLE BELOW...]
submit() {
    local table=$1 megabytes=$2 minutes=$3 below after='' id
    shift 3
    if [[ -n ${job[$table]:-} ]] || is_finished "$table"; then return; fi
    for below; do
        if [[ -n ${job[$below]:-} ]]; then after+=:${job[$below]}; fi
    done
    id=$(job_script | sbatch --parsable --job-name="brivok-$table" --chdir="$folder" \
        --output=logs/%x.log --open-mode=append --requeue --nodes=1 --ntasks=1 \
        --cpus-per-task=@THREADS@ --mem="${megabytes}M" --time="$minutes" \
        ${after:+--dependency="afterok$after" --kill-on-invalid-dep=yes} "${options[@]}")
    job[$table]=${id%%;*} # the name of a cluster may follow
    echo "$table: job ${job[$table]}"
}

@JOBS@)sh";

using Fillings = std::vector<std::pair<std::string_view, std::string>>;

std::string filled(std::string text, const Fillings& fillings) {
    for (const auto& [name, filling] : fillings) {
        text.replace(text.find(name), name.size(), filling);
    }
    return text;
}

std::string nameOf(int id) { return std::string(descriptorOf(id).signature()); }

/// As one word of a shell.
std::string quoted(const std::string& word) {
    std::string text = "'";
    for (const char c : word) text += c == '\'' ? "'\\''" : std::string(1, c);
    return text + "'";
}

/// For make and ninja, to which a dollar begins a variable.
std::string withDollarsDoubled(const std::string& text) {
    std::string doubled;
    for (const char c : text) doubled += c == '$' ? "$$" : std::string(1, c);
    return doubled;
}

/// What a shell runs, except for the name of the table: `table` stands for it.
std::string command(const std::string& program, const std::string& table, const Plan& plan) {
    return program + " make --only " + table + " -o . --threads " + std::to_string(plan.threads) +
           (plan.compress ? " --compress" : "");
}

/// The file of a table that a job writes last: its record, or a packed file.
std::string lastFileOf(int id, const Plan& plan) {
    if (plan.compress) return packedName(tableFileName(id, filesOf(id) - 1)).string();
    return nameOf(id) + ".json";
}

/// The last files of the tables that a job waits for, after a separator if there are any.
std::string filesBefore(const PlannedTable& table, const char* separator, const Plan& plan) {
    std::string names = table.after.empty() ? "" : separator;
    for (const int id : table.after) names += " " + lastFileOf(id, plan);
    return names;
}

// What a job asks of Slurm beyond its estimate. One that needs more than it asked for is ended, and
// its work is lost.
constexpr double MemoryMargin = 1.25;
constexpr long MegabytesMore = 128;
constexpr double TimeMargin = 10;
constexpr long MinutesMore = 10;

/// Megabytes in Slurm's sense, of 2^20 bytes.
std::string megabytesToAskFor(const PlannedTable& table) {
    const double megabytes = static_cast<double>(table.memory) / (1 << 20);
    return std::to_string(std::lround(MemoryMargin * megabytes) + MegabytesMore);
}

std::string minutesToAskFor(const PlannedTable& table) {
    return std::to_string(std::lround(TimeMargin * table.seconds / 60) + MinutesMore);
}

}  // namespace

std::string makefileOf(const Plan& plan) {
    std::string files;
    std::string jobs;
    for (const PlannedTable& table : plan.tables) {
        const std::string file = lastFileOf(table.id, plan);
        files += " \\\n    " + file;
        jobs += file + ":" + filesBefore(table, " |", plan) + "\n";
    }
    const std::string program = withDollarsDoubled(quoted(plan.program));
    return filled(Makefile,
                  {{"@AT_A_TIME@", std::to_string(plan.jobsAtATime)},
                   {"@TABLES@", files},
                   {"@JOBS@", jobs},
                   {"@COMMAND@", command(program, "$(firstword $(subst ., ,$@))", plan)}});
}

std::string ninjaFileOf(const Plan& plan) {
    std::string jobs;
    for (const PlannedTable& table : plan.tables) {
        jobs += "build " + lastFileOf(table.id, plan) + ": table" +
                filesBefore(table, " ||", plan) + "\n  table = " + nameOf(table.id) + "\n";
    }
    const std::string program = withDollarsDoubled(quoted(plan.program));
    return filled(NinjaFile, {{"@AT_A_TIME@", std::to_string(plan.jobsAtATime)},
                              {"@JOBS@", jobs},
                              {"@COMMAND@", command(program, "$table", plan)}});
}

std::string slurmScriptOf(const Plan& plan) {
    std::string jobs;
    for (const PlannedTable& table : plan.tables) {
        jobs += "submit " + nameOf(table.id) + " " + megabytesToAskFor(table) + " " +
                minutesToAskFor(table);
        for (const int id : table.after) jobs += " " + nameOf(id);
        jobs += "\n";
    }
    const char* const isFinished = plan.compress
                                       ? R"([[ -e $1.json ]] && ! compgen -G "$1.nb?" >/dev/null)"
                                       : "[[ -e $1.json ]]";
    return filled(SlurmScript, {{"@IS_FINISHED@", isFinished},
                                {"@THREADS@", std::to_string(plan.threads)},
                                {"@JOBS@", jobs},
                                {"@COMMAND@", command(quoted(plan.program), "\"$table\"", plan)}});
}

}  // namespace brivok::tables
