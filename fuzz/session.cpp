#include "session.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include "board/piece_values.h"
#include "egtb/tablebase_probe.h"
#include "folder.h"
#include "fresh_engine.h"
#include "hash/search_stats.h"
#include "program.h"
#include "search/searcher.h"
#include "shell/base/application.h"
#include "shell/base/settings.h"

namespace brivok::fuzz {

namespace {

/// Nodes between two polls of a search, nodes of one search, and nodes of all searches for one
/// input.
constexpr std::uint32_t NodesBetweenLooks = 40;
constexpr std::uint32_t NodesOfSearch = 400;
constexpr std::uint32_t NodesOfInput = 1000;

/// Milliseconds by which each look at the clock advances it; a few looks make a second.
constexpr std::uint64_t ClockStep = 50;

/// The engine's surroundings. A search reads a line every few nodes and ends after a few hundred;
/// output is discarded.
class Outside final : public FakePlatform {
public:
    Outside() { stepOfLook = ClockStep; }

    /// Only a running search calls this, first at its first node. Makes the search poll again soon,
    /// and stops it, as a line would, once it has gone far enough.
    bool inputReady() override {
        SearchStats& stats = searchStats;
        const bool pondering = theSearcher.searchMode == SearchMode::Pondering;
        stats.nextPoll = stats.nodes + NodesBetweenLooks;
        stats.nextPoll -= pondering ? PonderPollInterval : PollInterval;
        nodes += stats.nodes - std::min(nodesAtLook, stats.nodes);
        nodesAtLook = stats.nodes;
        if (stats.nodes > NodesOfSearch || nodes > NodesOfInput) theSearcher.stopSearch = true;
        return !theSearcher.stopSearch && FakePlatform::inputReady();
    }

    Transfer writeOutput(std::string_view text) override {
        return {Transfer::Outcome::Moved, text.size()};
    }

    MadeDirectory makeDirectory(const std::string&) override { return MadeDirectory::Failure; }

private:
    std::uint32_t nodes = 0;  ///< of all searches, up to the last poll
    std::uint32_t nodesAtLook = 0;
};

void runOnce(std::string_view lines) {
    Outside outside;
    Program program(outside);
    // Send the log nowhere. Mark the table folder as already searched, because searching it would
    // take longer than everything else.
    settings.logInSingleFile = settings.createLog = true;
    tablebases.tbDirectories = settings.egtbDir = "nowhere";
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size() - 1) + 1;
        outside.send(std::string(lines.substr(0, end)));
        lines.remove_prefix(end);
    }
    program.run();
}

}  // namespace

void freshBoard() {
    static Outside outside;
    if (theApplication == nullptr) {
        replacePlatform(outside);
        theApplication = std::make_unique<Application>();
        makeFresh();
    }
    settings = Settings{};
    RefreshPieceValues();
    theBoard.NewGame();
}

void runEngine(std::string_view lines) {
    for (const char* const settingsFile : {"", "ModernInterface: true\n"}) {
        writeFile("brivok.ini", settingsFile);
        runOnce(lines);
    }
}

}  // namespace brivok::fuzz
