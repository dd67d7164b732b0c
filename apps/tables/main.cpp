// brivok-tables: makes, checks, packs and describes endgame tables.

#include <CLI/CLI.hpp>

#include "../common/command_line.h"
#include "board/static_tables.h"
#include "commands.h"
#include "egtb/table_index.h"

namespace {

using namespace brivok;
using namespace brivok::tables;

/// Anything larger is a mistake, such as a negative number that has wrapped around.
constexpr std::uint64_t LargestSample = 1'000'000'000'000;

/// In megabytes; the same.
constexpr std::uint64_t LargestMemory = 1'000'000'000;

/// The command line: the command to run, with its options.
struct CommandLine {
    CLI::App app{
        "Makes, checks, packs, describes and consults Nalimov endgame tables of 3 to 6 men"};
    MakeOptions make;
    PlanOptions plan;
    VerifyOptions verify;
    SolveOptions solve;
    ReportOptions report;
    PackFilesOptions pack;
    Files files;
    bool succeeded = true;

    CommandLine() {
        app.require_subcommand(1);
        addMake();
        addPlan();
        addVerify();
        addSolve();
        addPack();
        addForFiles("unpack", "Write FILE for each FILE.emd", unpackFiles);
        addForFiles("info", "Describe table files", describeFiles);
        addReport();
    }

    void addMake() {
        CLI::App* const command = app.add_subcommand(
            "make", "Make tables and all that they depend on; existing tables are kept");
        command
            ->add_option("TABLES", make.targets,
                         "3men, 4men, 5men, all4, all5, or names such as krkbn")
            ->required();
        command->add_option("-o,--output", make.folder, "Folder of the tables")
            ->capture_default_str();
        command->add_flag("--compress", make.compress, "Pack the files and remove the plain ones");
        command->add_flag("--only", make.only,
                          "Make only the named tables; those below them must be there");
        addMemory(command, make.megabytes);
        addThreads(command, make.threads);
        command->callback([this] { makeTables(make); });
    }

    void addPlan() {
        CLI::App* const command = app.add_subcommand(
            "plan", "Write the jobs that make tables, for a program that runs jobs");
        command->add_option("TABLES", plan.targets, "As for make")->required();
        command->add_option("--for", plan.runner, "make, ninja or slurm")->required();
        command
            ->add_option("-o,--output", plan.folder,
                         "Folder of the tables; Makefile, build.ninja or submit is written there")
            ->capture_default_str();
        command->add_option("--program", plan.program,
                            "The brivok-tables that jobs run; by default this one");
        command->add_flag("--compress", plan.compress, "Pack the files and remove the plain ones");
        addMemory(command, plan.megabytes);
        addThreads(command, plan.threads);
        command->callback([this] { writePlan(plan); });
    }

    void addVerify() {
        CLI::App* const command = app.add_subcommand(
            "verify",
            "Compare the entries of the tables in a folder with those of their successors");
        command->add_option("FOLDER", verify.folder, "Folder of the tables")->required();
        command->add_option("TABLES", verify.tables,
                            "Only these: names such as kqk, 3men, 4men, 5men");
        command
            ->add_option("--sample", verify.sample,
                         "Only this many entries of each file, using the engine's own moves")
            ->check(CLI::Range(std::uint64_t{1}, LargestSample));
        addThreads(command, verify.threads);
        command->callback([this] { succeeded = verifyTables(verify); });
    }

    void addSolve() {
        CLI::App* const command = app.add_subcommand(
            "solve", "Tell the value of a position, of its moves, and a line to mate");
        command
            ->add_option("FEN", solve.fen,
                         "The position, in quotes; - reads positions line by line")
            ->required();
        command
            ->add_option("-o,--tables", solve.folders, "Folders of the tables, separated by , or ;")
            ->capture_default_str();
        command->callback([this] { solvePosition(solve); });
    }

    void addPack() {
        CLI::App* const command = app.add_subcommand("pack", "Write FILE.emd for each file");
        command->add_option("FILES", pack.files, "Table files")->required();
        command->add_flag("--best", pack.best,
                          "Take several times as long for slightly smaller files");
        addThreads(command, pack.threads);
        command->callback([this] { packFiles(pack); });
    }

    void addReport() {
        CLI::App* const command = app.add_subcommand(
            "report", "Write a page on all tables in a folder: statistics, longest mates, sizes");
        command->add_option("FOLDER", report.folder, "Folder of the tables")->required();
        command->add_option("-o,--output", report.output, "Folder of the pages")
            ->capture_default_str();
        command
            ->add_option("--sums", report.sums,
                         "Print only the SHA-256 sums of plain or packed files")
            ->check(CLI::IsMember({"plain", "packed"}));
        command->callback([this] { reportTables(report); });
    }

    void addForFiles(const char* name, const char* description, void (*run)(const Files&)) {
        CLI::App* const command = app.add_subcommand(name, description);
        command->add_option("FILES", files, "Table files")->required();
        command->callback([this, run] { run(files); });
    }

    static void addMemory(CLI::App* command, std::uint64_t& megabytes) {
        command
            ->add_option("--memory", megabytes,
                         "Megabytes of memory to use; by default three quarters of the machine's")
            ->check(CLI::Range(std::uint64_t{1}, LargestMemory));
    }

    static void addThreads(CLI::App* command, unsigned& threads) {
        command->add_option("--threads", threads, "Threads to use")
            ->check(CLI::Range(1, 256))
            ->capture_default_str();
    }
};

}  // namespace

int main(int argc, char** argv) {
    buildStaticTables();
    prepareTableIndex();
    return runApp("brivok-tables", [argc, argv] {
        CommandLine line;
        const auto code = parseCommandLine(line.app, argc, argv);
        return code.value_or(line.succeeded ? 0 : FailureCode);
    });
}
