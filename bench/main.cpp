// brivok-bench: measures the engine. bench/compare compares what it prints as JSON.

#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "../apps/common/command_line.h"
#include "platform/processor_level.h"
#include "report.h"
#include "runs.h"
#include "shell/base/application.h"
#include "shell/base/version.h"
#include "start.h"

namespace {

using namespace brivok;

constexpr int DefaultPerftDepth = 4;
constexpr int DefaultTimedDepth = 8;

struct CommandLine {
    CLI::App app{
        "Measures Brivok in processor time: the node rate over a fixed set of positions,\n"
        "counting move trees, and the time to depth. Without a command, all three."};
    bool json = false;
    int signatureDepth = SignatureDepth;
    int perftDepth = DefaultPerftDepth;
    int timedDepth = DefaultTimedDepth;
    bool bulk = false;
    std::string fen;
    std::string variant{nameOf(Variant::Normal)};
    CLI::App* const signature = app.add_subcommand(
        "signature",
        "Search each position with fresh tables; at the default depth, exit with "
        "code 1 unless the total of nodes is the known one");
    CLI::App* const perft = app.add_subcommand("perft", "Count the legal move trees");
    CLI::App* const depth = app.add_subcommand("depth", "Measure the time to reach each depth");

    CommandLine() {
        app.require_subcommand(0, 1);
        app.add_flag("--json", json, "Print JSON, with both processor and wall time");
        addCommonOptions(*signature, signatureDepth, MaxBenchDepth);
        addCommonOptions(*perft, perftDepth, MaxBenchPerftDepth);
        addCommonOptions(*depth, timedDepth, MaxBenchDepth);
        auto* const position =
            perft->add_option("--fen", fen, "Only this position (default: the whole set)");
        perft->add_flag("--bulk", bulk, "Count the last half-move without making it");
        perft->add_option("--variant", variant, "The variant of the position")
            ->needs(position)
            ->check(CLI::IsMember(
                std::vector<std::string>(std::begin(VariantNames), std::end(VariantNames))))
            ->capture_default_str();
    }

    [[nodiscard]] bool wants(const CLI::App& command) const {
        return command.parsed() || app.get_subcommands().empty();
    }

private:
    static void addCommonOptions(CLI::App& command, int& depthValue, int most) {
        command.fallthrough();  // for --json
        command.add_option("--depth", depthValue, "Half-moves")
            ->check(CLI::Range(1, most))
            ->capture_default_str();
    }
};

/// Measures and reports; false if a node total is wrong.
bool carryOut(const CommandLine& line) {
    Json json{{"engine", EngineName}, {"build", BRIVOK_BUILD}};
    bool right = true;
    const auto report = [&](const CLI::App& command, const Run& done, auto print) {
        right = right && done.isRight();
        if (line.json) {
            json[command.get_name()] = jsonOf(done);
        } else {
            print(done);
            std::printf("\n");
            std::fflush(stdout);
        }
    };

    if (!line.json) std::printf("%s (%s)\n\n", EngineName, BRIVOK_BUILD);
    if (line.wants(*line.signature)) {
        report(*line.signature, runSignature(line.signatureDepth),
               [](const Run& done) { printRun("Signature", done); });
    }
    if (line.wants(*line.perft)) {
        const TestPosition own{*variantNamed(line.variant), line.fen.c_str()};
        const auto positions = line.fen.empty() ? signaturePositions() : std::span(&own, 1);
        report(*line.perft, runPerft(positions, line.perftDepth, line.bulk),
               [](const Run& done) { printRun("Perft", done); });
    }
    if (line.wants(*line.depth)) report(*line.depth, runDepths(line.timedDepth), printDepths);
    // A position from the command line can hold any byte; invalid UTF-8 is replaced.
    constexpr auto Compact = -1;
    if (line.json) {
        std::printf("%s\n", json.dump(Compact, ' ', true, Json::error_handler_t::replace).c_str());
    }
    return right;
}

int run(int argc, char** argv) {
    CommandLine line;
    if (const auto code = parseCommandLine(line.app, argc, argv)) return *code;
    startEngine();
    return carryOut(line) ? 0 : FailureCode;
}

}  // namespace

int main(int argc, char** argv) {
    brivok::continueAtBestLevel(argv);
    return runApp("brivok-bench", [argc, argv] { return run(argc, argv); });
}
