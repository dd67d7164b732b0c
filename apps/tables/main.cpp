// brivok-tables: makes, checks, packs and describes endgame tables.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "../common/command_line.h"
#include "../common/progress_line.h"
#include "board/static_tables.h"
#include "egtb/table_index.h"
#include "moves.h"
#include "pack.h"
#include "table_info.h"
#include "table_maker.h"
#include "table_store.h"
#include "verify.h"

namespace {

using namespace brivok;
using namespace brivok::tables;

/// Number of entries that make() checks in an existing file before trusting it.
constexpr std::uint64_t TrustedSample = 1000;

/// Anything larger is a mistake, such as a negative number that has wrapped around.
constexpr std::uint64_t LargestSample = 1'000'000'000'000;

struct Options {
    std::vector<std::string> names;  ///< of tables or files
    std::filesystem::path folder = ".";
    unsigned threads = std::max(1U, std::thread::hardware_concurrency());
    std::uint64_t sample = 0;
    bool compress = false;
    bool best = false;
};

/// Prints the progress and the outcome of work on a table or file.
class Task {
public:
    explicit Task(std::string itsName) : name(std::move(itsName)) {}

    void show(const std::string& step) { line.show(name + ": " + step); }

    /// Prints the outcome as a line on standard output.
    void report(const std::string& outcome) {
        line.clear();
        std::printf("%s: %s\n", name.c_str(), outcome.c_str());
        std::fflush(stdout);
    }

private:
    std::string name;
    ProgressLine line;
};

std::string nameOf(int id) { return std::string(descriptorOf(id).signature()); }

/// Whether the table exists and a sample of its entries is right.
bool isFinished(int id, TableStore& store, Task& task) {
    if (!store.has(id)) return false;
    try {
        task.show("checking");
        const auto finding = contradictionInSample(id, store, TrustedSample);
        if (!finding) return true;
        task.report(*finding);
    } catch (const AppError& error) {
        task.report(error.what());
    }
    return false;
}

int make(const Options& options) {
    std::filesystem::create_directories(options.folder);
    TableStore store(options.folder);
    for (const int id : tablesToMake(options.names)) {
        Task task(nameOf(id));
        store.keepOnly(tablesBelow(id));
        if (isFinished(id, store, task)) {
            task.report("already there");
        } else {
            store.put(id, makeTable(id, store, options.threads,
                                    [&](const std::string& step) { task.show(step); }));
            store.save(id);
            task.report("made");
        }
        if (options.compress) {
            task.show("packing");
            store.pack(id, options.threads);
        }
    }
    return 0;
}

int verify(const Options& options) {
    TableStore store(options.folder);
    bool foundTables = false;
    for (int id = 1; id < TableCount && descriptorOf(id).signature().size() <= MaxMen; ++id) {
        if (!store.hasAny(id)) continue;
        foundTables = true;
        Task task(nameOf(id));
        task.show("verifying");
        std::vector<int> used = tablesBelow(id);
        used.push_back(id);
        store.keepOnly(used);
        const auto finding = options.sample != 0 ? contradictionInSample(id, store, options.sample)
                                                 : contradiction(id, store, options.threads);
        task.report(finding.value_or("correct"));
        if (finding) return FailureCode;
    }
    if (!foundTables) fail(options.folder, "no tables found");
    return 0;
}

PackProgress percentage(Task& task) {
    return [&task](std::uint64_t done, std::uint64_t total) {
        task.show(std::to_string(done * 100 / total) + " %");
    };
}

int pack(const Options& options) {
    for (const std::string& file : options.names) {
        const std::filesystem::path packed = packedName(file);
        if (isPackedName(file)) fail(file, "already packed");
        Task task(packed.string());
        const PackResult result = packFile(
            file, packed,
            {.threads = options.threads, .best = options.best, .progress = percentage(task)});
        task.report(std::to_string(result.packedSize) + " of " + std::to_string(result.plainSize) +
                    " bytes");
    }
    return 0;
}

int unpack(const Options& options) {
    for (const std::string& file : options.names) {
        const std::filesystem::path plain = plainName(file);
        Task task(plain.string());
        const std::uint64_t size = unpackFile(file, plain, percentage(task));
        task.report(std::to_string(size) + " bytes");
    }
    return 0;
}

int info(const Options& options) {
    for (const std::string& file : options.names) std::printf("%s", tableInfo(file).c_str());
    return 0;
}

int run(int argc, char** argv) {
    CLI::App app{"Makes, checks, packs and describes Nalimov endgame tables of 3 to 5 men"};
    app.require_subcommand(1);
    Options options;

    CLI::App* const making = app.add_subcommand(
        "make", "Make tables and all that they depend on; existing tables are kept");
    making->add_option("TABLES", options.names, "3men, 4men, all4, or names such as kqk or krkbn")
        ->required();
    making->add_option("-o,--output", options.folder, "Folder of the tables")
        ->capture_default_str();
    making->add_flag("--compress", options.compress, "Pack the files and remove the plain ones");

    CLI::App* const verifying = app.add_subcommand(
        "verify", "Compare the entries of all tables in a folder with those of their successors");
    verifying->add_option("FOLDER", options.folder, "Folder of the tables")->required();
    verifying
        ->add_option("--sample", options.sample,
                     "Only this many entries of each file, using the engine's own moves")
        ->check(CLI::Range(std::uint64_t{1}, LargestSample));

    CLI::App* const describing = app.add_subcommand("info", "Describe table files");
    CLI::App* const packing = app.add_subcommand("pack", "Write FILE.emd for each file");
    packing->add_flag("--best", options.best,
                      "Take several times as long for slightly smaller files");
    CLI::App* const unpacking = app.add_subcommand("unpack", "Write FILE for each FILE.emd");
    for (CLI::App* const filing : {describing, packing, unpacking}) {
        filing->add_option("FILES", options.names, "Table files")->required();
    }
    for (CLI::App* const heavy : {making, verifying, packing}) {
        heavy->add_option("--threads", options.threads, "Threads to use")
            ->check(CLI::Range(1, 256))
            ->capture_default_str();
    }
    if (const auto code = parseCommandLine(app, argc, argv)) return *code;

    if (packing->parsed()) return pack(options);
    if (unpacking->parsed()) return unpack(options);
    buildStaticTables();
    prepareTableIndex();
    if (making->parsed()) return make(options);
    if (verifying->parsed()) return verify(options);
    return info(options);
}

}  // namespace

int main(int argc, char** argv) {
    return runApp("brivok-tables", [argc, argv] { return run(argc, argv); });
}
