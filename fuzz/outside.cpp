#include "outside.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <list>
#include <span>
#include <vector>

#include "hash/search_stats.h"
#include "platform/platform.h"
#include "search/searcher.h"
#include "shell/base/application.h"
#include "shell/base/words.h"

namespace brivok {

namespace {

/// Nodes between two looks of a search at the input, of one search, and of all searches on one
/// input.
constexpr std::uint32_t NodesBetweenLooks = 40;
constexpr std::uint32_t NodesOfSearch = 400;
constexpr std::uint32_t NodesOfInput = 1000;

/// By so much each look at the clock moves it on: a few of them make a second.
constexpr std::uint64_t ClockStep = 50;

/// Starts out in the static part: the engine looks at the clock before any constructor here runs.
struct Outside {
    std::string_view left;
    std::uint64_t clock = 0;
    std::uint32_t nodes = 0;  ///< of all searches, up to the last look
    std::uint32_t nodesAtLook = 0;
};
constinit Outside outside;

/// Takes the next line of the input, as much of it as there is room for.
std::string_view takeLine(std::size_t room) {
    std::string_view& left = outside.left;
    const std::string_view line = left.substr(0, std::min(left.find('\n'), room - 1) + 1);
    left.remove_prefix(line.size());
    return line;
}

std::filesystem::path folder;

void leaveFolder() {
    std::error_code unknown;
    std::filesystem::remove_all(folder, unknown);
}

}  // namespace

bool platform::inputIsTerminal() { return false; }
bool platform::errorIsTerminal() { return false; }
void platform::surviveClosedOutput() {}
std::uint64_t platform::milliseconds() { return outside.clock += ClockStep; }

platform::MadeDirectory platform::makeDirectory(const std::string&) {
    return MadeDirectory::Failure;
}

/// Only a running search asks, the first time at its first node. It is made to ask again soon, and
/// told to stop, as by a line, when it has gone far enough.
bool platform::inputReady() {
    SearchStats& stats = searchStats;
    const bool pondering = theSearcher.searchMode == SearchMode::Pondering;
    stats.nextPoll = stats.nodes + NodesBetweenLooks;
    stats.nextPoll -= pondering ? PonderPollInterval : PollInterval;
    outside.nodes += stats.nodes - std::min(outside.nodesAtLook, stats.nodes);
    outside.nodesAtLook = stats.nodes;
    if (stats.nodes > NodesOfSearch || outside.nodes > NodesOfInput) theSearcher.stopSearch = true;
    return !theSearcher.stopSearch && !outside.left.empty();
}

std::size_t platform::readInput(char* buffer, std::size_t capacity) {
    const std::string_view line = takeLine(capacity);
    if (line.empty()) throw fuzz::ProcessEnded();
    return line.copy(buffer, capacity);
}

std::unique_ptr<Application> theApplication;

Application::Application() = default;
void ExitProgram(int) { throw fuzz::ProcessEnded(); }
void EndAtOnce(const std::string&) { throw fuzz::ProcessEnded(); }

namespace fuzz {

namespace {

std::string harmlessLine(std::string line) {
    const std::vector<std::string> words = SplitWords(line);
    if (!words.empty() && words[0] == "perft") return "perft 1";
    if (line.find("Hash") != line.npos) {
        const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
        const auto both = [&](char a, char b) { return isDigit(a) && isDigit(b); };
        line.erase(std::unique(line.begin(), line.end(), both), line.end());
    }
    for (const char* const key : {"NalimovPath", "Folder", "File", "Dir"}) {
        if (line.find(key) == line.npos) continue;
        for (const char c : {'/', ',', ';'}) std::replace(line.begin(), line.end(), c, '_');
    }
    return line;
}

}  // namespace

void setInput(std::string lines) {
    static std::string kept;
    kept = std::move(lines);
    outside = {kept};
}

void writeFile(const char* name, std::string_view content) {
    std::ofstream(name, std::ios::binary) << content;
}

void removeFiles() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) std::filesystem::remove(entry);
    }
}

std::string harmless(std::string_view lines) {
    std::string all;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        all += harmlessLine(std::string(lines.substr(0, end))) + '\n';
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return all;
}

}  // namespace fuzz

}  // namespace brivok

/// Less of the past is kept than usual, of freed memory and of stacks: it takes time.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=16:malloc_context_size=8";
}

/// Called by libFuzzer once, before all else. What the engine prints is of no use.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    using namespace brivok;
    // The names of inputs and of their folders are to mean the same from the other folder.
    static std::list<std::string> paths;
    for (char*& argument : std::span(*arguments, static_cast<std::size_t>(*count)).subspan(1)) {
        if (*argument == '-') continue;
        argument = paths.emplace_back(std::filesystem::absolute(argument).string()).data();
    }
    std::string name = (std::filesystem::temp_directory_path() / "brivok-fuzz-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
        std::fprintf(stderr, "cannot make a folder like %s\n", name.c_str());
        std::exit(1);
    }
    folder = name;
    std::filesystem::current_path(folder);
    std::atexit(leaveFolder);
    std::filesystem::create_directory("logs");
    // Where the engine appends to, run after run.
    for (const char* const grows : {"brivoklog.txt", "suite-results.txt", "suite-notfound.epd"}) {
        std::filesystem::create_symlink("/dev/null", grows);
    }
    return 0;
}
