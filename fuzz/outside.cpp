#include "outside.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include "hash/search_stats.h"
#include "platform/platform.h"
#include "search/searcher.h"
#include "shell/base/application.h"

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

void fuzz::setInput(std::string lines) {
    static std::string kept;
    kept = std::move(lines);
    outside = {kept};
}

}  // namespace brivok
