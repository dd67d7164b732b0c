#include "tools/epd_runner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <optional>
#include <string>

#include "hash/eval_hash.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "movegen/san.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/console.h"
#include "shell/base/version.h"
#include "shell/base/words.h"
#include "tools/position_file.h"

namespace brivok {

namespace {

constexpr std::uint32_t Second = 100;  ///< centiseconds
constexpr std::int64_t LongestSeconds = 0x7FFFFFFF / Second;

constexpr int RuleWidth = 80;

/// Adds the counters of a search, except `nextPoll`, which is not a count.
void addTo(SearchStats& sum, const SearchStats& search) {
    using Counters = std::array<std::uint32_t, sizeof(SearchStats) / sizeof(std::uint32_t)>;
    auto total = std::bit_cast<Counters>(sum);
    const auto terms = std::bit_cast<Counters>(search);
    for (std::size_t i = 0; i < total.size(); ++i) total[i] += terms[i];
    sum = std::bit_cast<SearchStats>(total);
    sum.nextPoll = 0;
}

/// 0 for a suite without lines.
float percentOf(int count, int total) {
    return total == 0 ? 0.0F : static_cast<float>(count) / static_cast<float>(total) * 100.0F;
}

std::string rule(char mark) { return std::string(RuleWidth, mark); }

/// One run over a suite. Files are flushed as it goes, because "quit" may end the process in the
/// middle of a search.
class EpdRun {
public:
    EpdRun(Application& application, SearchListener& toTell, const std::string& baseName,
           std::uint32_t secondsEach)
        : app(application),
          listener(toTell),
          resultsName(baseName + "-results.txt"),
          notFoundName(baseName + "-notfound.epd"),
          seconds(secondsEach) {}

    [[nodiscard]] bool openFiles();
    void writeHead(const std::string& suiteName);
    void runPosition(const std::string& line);
    void writeSummary();

private:
    Move think();

    Application& app;
    SearchListener& listener;
    std::string resultsName;
    std::string notFoundName;
    std::ofstream results;
    std::ofstream notFound;
    std::uint32_t seconds;  ///< per position
    std::uint32_t startTime = centiseconds();
    int total = 0;
    int found = 0;
    SearchStats sum{};
    std::uint64_t nodes = 0;  ///< of all searches; a long run overflows the counter in `sum`
};

bool EpdRun::openFiles() {
    results.open(resultsName, std::ios::app);
    if (!results) {
        Print(app, "I couldn't open file %s for printing the results!\n", resultsName.c_str());
        return false;
    }
    notFound.open(notFoundName, std::ios::app);
    if (!notFound) {
        Print(app, "I couldn't open file %s for store not found positions!\n",
              notFoundName.c_str());
        return false;
    }
    return true;
}

void EpdRun::writeHead(const std::string& suiteName) {
    results << std::fixed << std::setprecision(2) << EngineName << '\n'
            << "EPD Test-Suite: " << suiteName << '\n'
            << "Seconds per position: " << seconds << '\n'
            << rule('-') << std::endl;
}

/// Searches the position for its time. Clears all tables but the pawn table first.
Move EpdRun::think() {
    transpositionTable.clear();
    evalHashTable.Clear();
    SearchRequest request = theSearcher.standingRequest();
    request.mode = SearchMode::Idle;
    request.maxIteration = NoFixedDepth;
    request.clock.emplace().setFixedTime(seconds * Second);
    return theSearcher.think(request, listener);
}

void EpdRun::runPosition(const std::string& line) {
    ++total;
    theBoard.setPositionFromFen(line);
    Print(app, "\n");
    Print(app, "Position N\xA7 %d:\n", total);
    Print(app, "%s\n", line.c_str());
    results << line << std::endl;

    const Move move = think();
    addTo(sum, searchStats);
    nodes += searchStats.nodes;
    results << "Brivok's move: " << moveToSan(theBoard, move)
            << " Eval: " << theSearcher.iterationScore * 0.01 << " Depth: " << theSearcher.iteration
            << " Time: " << (centiseconds() - theSearcher.searchStartTime) * 0.01
            << " Nodes: " << searchStats.nodes << "\n\n";

    if (CheckSolution(theBoard, line, move)) {
        ++found;
        Print(app, "Solution FOUND\n");
        results << "Result: FOUND\n";
    } else {
        Print(app, "Solution NOT FOUND\n");
        results << "Result: NOT FOUND\n";
        notFound << line << std::endl;
    }
    results << rule('-') << std::endl;
    Print(app, "Partial results: %d/%d\n", found, total);
}

void EpdRun::writeSummary() {
    const double used = (centiseconds() - startTime) * 0.01;
    const float foundShare = percentOf(found, total);
    const float notFoundShare = percentOf(total - found, total);
    const double rate = used > 0 ? static_cast<double>(nodes) / used : 0;

    searchStats = sum;
    listener.onStatistics(sum);
    Print(app, "\n");
    Print(app, "FINAL RESULTS:\n");
    Print(app, "---------------\n\n");
    Print(app, "Found positions            -> %d (%f%%)\n", found, double{foundShare});
    Print(app, "Not found positions        -> %d (%f%%)\n", total - found, double{notFoundShare});
    Print(app, "-----------------------------\n");
    Print(app, "Total positions            -> %d (100.00%%)\n", total);
    Print(app, "Total time                 -> %f seg.\n\n", used);

    results << '\n'
            << "POSITIONS:      " << total << '\n'
            << "FOUND:          " << found << " (" << foundShare << "%)\n"
            << "NOT FOUND:      " << total - found << " (" << notFoundShare << "%)\n"
            << "TOTAL TIME:     " << used << " seg\n"
            << "TOTAL NODES:    " << nodes << '\n'
            << "NPS:            " << static_cast<std::uint64_t>(rate) << '\n'
            << rule('=') << "\n\n"
            << std::flush;
}

}  // namespace

bool CheckSolution(Board& board, std::string_view line, Move move) {
    const auto holds = [line](std::string_view text) {
        return line.find(text) != std::string_view::npos;
    };
    const std::string san = moveToSan(board, move);
    if (holds("bm")) return holds(san);
    return holds("am") && !holds(san);
}

void RunEpdTest(Application& app, SearchListener& listener) {
    const std::optional<std::string> name = Ask(app, "EPD Filename: ");
    if (!name) return;
    PositionFile suite(*name);
    if (!suite.isOpen()) {
        Print(app, "I can't open the file %s!\n", name->c_str());
        return;
    }
    const std::optional<std::string> answer = Ask(app, "Seconds per position: ");
    if (!answer) return;
    const std::size_t digits = std::min(answer->find_first_not_of(" \t"), answer->size());
    const std::int64_t seconds =
        std::min(parseInteger(std::string_view(*answer).substr(digits)), LongestSeconds);
    if (seconds < 1) {
        Print(app, "The time must be >= 1 sec\n");
        return;
    }

    EpdRun run(app, listener, name->substr(0, name->find('.')),
               static_cast<std::uint32_t>(seconds));
    if (!run.openFiles()) return;
    run.writeHead(*name);
    std::string line;
    while (suite.next(line)) run.runPosition(line);
    run.writeSummary();
}

}  // namespace brivok
