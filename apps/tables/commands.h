#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "../common/disk.h"

namespace brivok::tables {

/// The commands of brivok-tables, without command line parsing. They print their results on
/// standard output. If a command fails it throws AppError and leaves no incomplete file behind.

[[nodiscard]] inline unsigned allProcessors() {
    return std::max(1U, std::thread::hardware_concurrency());
}

/// Three quarters of the machine's memory, in megabytes.
[[nodiscard]] inline std::uint64_t mostMemory() { return machineMemory() / 4 * 3 / 1'000'000; }

struct MakeOptions {
    std::vector<std::string> targets;  ///< as in tablesToMake()
    std::filesystem::path folder = ".";
    unsigned threads = allProcessors();
    std::uint64_t megabytes = mostMemory();  ///< of memory to use
    bool compress = false;                   ///< pack the files and remove the plain ones
    bool only = false;  ///< not the tables that they depend on, which must be there
};
/// Makes tables and all that they depend on. After an interruption of any kind, the same call goes
/// on with what was not finished.
void makeTables(const MakeOptions& options);

struct PlanOptions {
    std::vector<std::string> targets;  ///< as in tablesToMake()
    std::string runner;                ///< of the jobs: "make", "ninja" or "slurm"
    std::filesystem::path folder = ".";
    std::filesystem::path program;           ///< that jobs run; empty for this one
    unsigned threads = 1;                    ///< of each job
    std::uint64_t megabytes = mostMemory();  ///< of memory to use on one machine
    bool compress = false;                   ///< pack the files and remove the plain ones
};
/// Writes the jobs that make tables, and all that they depend on, as a file for a program that runs
/// jobs.
void writePlan(const PlanOptions& options);

struct VerifyOptions {
    std::filesystem::path folder;
    std::vector<std::string> tables;  ///< as in tablesNamed(); none stands for all in the folder
    std::uint64_t sample = 0;  ///< entries of each file, by the engine's own moves; 0 checks all
    unsigned threads = allProcessors();
};
/// Compares the entries of tables in a folder with those of their successors, up to the first table
/// that is wrong. Returns whether all are right.
[[nodiscard]] bool verifyTables(const VerifyOptions& options);

struct SolveOptions {
    std::string fen;            ///< or "-" for standard input, a FEN a line
    std::string folders = ".";  ///< separated by "," or ";"
};
/// Prints the value of a position, of its moves, and a line to mate; of several positions only the
/// values, or what is wrong with them.
void solvePosition(const SolveOptions& options);

struct ReportOptions {
    std::filesystem::path folder;        ///< of the tables
    std::filesystem::path output = ".";  ///< folder of the pages
    std::string sums;  ///< "plain" or "packed": print only the sums of these files
};
/// Writes a page on all tables in a folder, as Markdown with a folder of pictures and as HTML; or
/// prints the SHA-256 sums of the files, as sha256sum -c reads them.
void reportTables(const ReportOptions& options);

/// Table files.
using Files = std::vector<std::string>;

struct PackFilesOptions {
    Files files;
    bool best = false;  ///< several times as long, for slightly smaller files
    unsigned threads = allProcessors();
};
/// Writes FILE.emd for each file, and adds it to the record of the table. Refuses a plain file that
/// is not as recorded.
void packFiles(const PackFilesOptions& options);

/// Writes FILE for each FILE.emd. Refuses a packed file whose checksums do not agree.
void unpackFiles(const Files& files);

/// Prints what the files hold.
void describeFiles(const Files& files);

}  // namespace brivok::tables
