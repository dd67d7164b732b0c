// The clock of a search and its input, under both protocols, on a clock that the test controls.

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "hash/search_stats.h"
#include "program.h"
#include "search/searcher.h"
#include "shell/base/application.h"
#include "shell/base/settings.h"

namespace brivok {
namespace {

namespace fs = std::filesystem;

constexpr char Middle[] =
    "r3r1k1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10";
constexpr char LogName[] = "brivoklog.txt";

/// Nodes that may still be counted after a search has been told to stop.
constexpr std::uint32_t Unwinding = 100;

bool has(std::string_view text, std::string_view part) { return text.find(part) != text.npos; }

int count(std::string_view text, std::string_view part) {
    int found = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
    return found;
}

std::string thinkingTime(std::uint32_t left, std::uint32_t budget) {
    return "## (Think) Left time: " + std::to_string(left) +
           " Thinking time: " + std::to_string(budget) + "\n";
}

/// A fake platform that records each poll.
class Watch final : public FakePlatform {
public:
    bool inputReady() override {
        nodes.push_back(searchStats.nodes);
        answers.push_back(count(output(), "readyok"));
        return FakePlatform::inputReady();
    }

    std::vector<std::uint32_t> nodes;  ///< of the search, at each poll
    std::vector<int> answers;          ///< printed before each poll
};

/// Runs in an empty folder, with a log.
class SearchClockTest : public ::testing::Test {
protected:
    SearchClockTest() : home(fs::current_path()) {
        std::string name = fs::temp_directory_path() / "brivok-XXXXXX";
        folder = ::mkdtemp(name.data());
        fs::current_path(folder);
    }
    ~SearchClockTest() override {
        program.reset();
        fs::current_path(home);
        fs::remove_all(folder);
    }

    /// Restarts the program with its log and types these lines.
    void begin(const std::string& lines) {
        program.reset();
        fs::remove(LogName);
        outside.emplace();
        program.emplace(*outside);
        settings.createLog = settings.logInSingleFile = true;
        theApplication->logger.OpenLog();
        program->type(lines);
        program->run();
    }
    void beginUci(const std::string& more = "isready") {
        begin("uci\nposition fen " + std::string(Middle) + '\n' + more);
    }
    void beginWinBoard(const std::string& lines) { begin("xboard\n" + lines); }

    void type(std::string_view line, const Moment& when = now()) { outside->type(line, when); }

    /// Continues the run; returns the new output.
    std::string run() {
        const std::size_t before = outside->output().size();
        program->run();
        return outside->output().substr(before);
    }

    std::string search(std::string_view go) {
        type(go);
        return run();
    }

    static std::string log() {
        std::fflush(nullptr);
        std::ifstream file(LogName, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fs::path home;
    fs::path folder;
    std::optional<Watch> outside;
    std::optional<Program> program;
};

TEST_F(SearchClockTest, UciBudgets) {
    struct Case {
        const char* go;
        std::uint32_t left;    // centiseconds
        std::uint32_t budget;  // centiseconds
    };
    beginUci();
    for (const auto& [go, left, budget] : std::vector<Case>{
             // A thirtieth, or a sixtieth in the last minute; more when ahead on the clock, less
             // when behind.
             {"wtime 300000 btime 300000", 30000, 1000},
             {"wtime 60000 btime 60000", 6000, 100},
             {"wtime 300000 btime 600000", 30000, 600},
             {"wtime 300000 btime 340000", 30000, 750},
             {"wtime 300000 btime 320000", 30000, 857},
             {"wtime 600000 btime 300000", 60000, 4000},
             {"wtime 600000 btime 530000", 60000, 3000},
             {"wtime 600000 btime 560000", 60000, 2400},
             {"wtime 24000 btime 30000", 2400, 34},
             // All of the increment, two thirds of it, or none.
             {"wtime 300000 btime 300000 winc 5000 binc 1", 30000, 1500},
             {"wtime 6000 btime 6000 winc 4000", 600, 286},
             {"wtime 1000 btime 1000 winc 2000", 100, 1},
             {"wtime 300000 btime 300000 movestogo 40", 30000, 675},
             {"wtime 10000 btime 1 movestogo 1", 1000, 900},
             {"wtime 200 btime 200 movestogo 1", 20, 15},
             {"wtime 50 btime 50 movestogo 1", 5, 1},
             {"movetime 1234", 0, 123},
             {"wtime 60000 movetime 50", 0, 5},
             {"movetime 50 wtime 60000", 6000, 5},
             // No time means the shortest budget; no clock means no limit.
             {"wtime 0 btime 0", 0, 1},
             {"wtime -500 btime -7 winc 100", 0, 1},
             {"wtime nan btime inf movetime 20", 0, 2},
             {"nodes 1000", 0, 0}}) {
        type("go " + std::string(go));
        type("stop", after("Thinking time"));
        EXPECT_TRUE(run().starts_with(thinkingTime(left, budget))) << go;
    }
    beginUci("position startpos moves e2e4");
    type("go wtime 1 btime 30000");
    type("stop", after("Thinking time"));
    EXPECT_TRUE(has(run(), thinkingTime(3000, 66))) << "the clock of the side to move";
    type("go wtime 1000 infinite\nstop");
    type("go ponder wtime 1000\nstop");
    EXPECT_FALSE(has(run() + search("go depth 3 wtime 1000"), "##")) << "no limit of time";
}

TEST_F(SearchClockTest, WinBoardBudgets) {
    struct Case {
        std::string lines;
        std::uint32_t left;
        std::uint32_t budget;
    };
    const std::string opening =
        "setboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 38";
    beginWinBoard("easy");
    for (const auto& [lines, left, budget] :
         std::vector<Case>{{"hard\neasy", 30000, 675},
                           {"level 40 5 0", 30000, 675},
                           {"level 40 5:30 0", 30000, 675},
                           {"level 0 5 0", 30000, 1000},
                           {"level 0 2:59 12", 12000, 1600},
                           {"level 20 1 0\ntime 1000", 1000, 45},
                           {"level 0 1 0", 6000, 100},
                           {"level 0 5 0\ntime 30000\notim 15000", 30000, 2000},
                           {"level 0 1 1\ntime 5000\notim 5000", 5000, 183},
                           {"level 0 5 0\nlevel x 5 y\ntime 600x", 600, 7},
                           {"st 2", 0, 200},
                           {"sd 3\nst 2", 0, 200},
                           {"sd 3\nlevel 40 5 0", 30000, 675},
                           {"level 0 5 0\n" + opening, 30000, 9000},
                           {opening + "\ntime 1000", 1000, 255},
                           {"level 0 5 0\nnew", 30000, 675}}) {
        type("new\n" + lines + "\ngo");
        type("?", after("\n 3"));
        const std::string said = run();
        EXPECT_TRUE(said.starts_with(thinkingTime(left, budget))) << lines;
        EXPECT_EQ(count(said, "\nmove "), 1) << lines;
    }
    EXPECT_FALSE(has(search("new\nsd 3\ngo"), "##"));
}

TEST_F(SearchClockTest, FixedTimeIsUsedUp) {
    beginUci();
    outside->stepOfPoll = 200;
    EXPECT_EQ(count(search("go movetime 1000"), "bestmove"), 1);
    EXPECT_EQ(outside->clock, 1000U);
    // A fixed time is used fully, not just two thirds.
    outside->stepOfPoll = 0;
    type("go movetime 1000");
    outside->turnClock(990, after("info depth 4 "));
    outside->turnClock(10, after("info depth 5 "));
    EXPECT_FALSE(has(run(), "info depth 7 "));

    beginWinBoard("easy\nsetboard " + std::string(Middle));
    outside->stepOfPoll = 200;
    EXPECT_EQ(count(search("st 1\ngo"), "\nmove "), 1);
    EXPECT_EQ(outside->clock, 1000U);
}

TEST_F(SearchClockTest, DeepeningEndsAfterTwoThirds) {
    for (const bool goesOn : {true, false}) {
        beginUci();
        type("go wtime 30000 btime 30000");
        outside->turnClock(goesOn ? 330 : 340, after("info depth 4 "));
        if (goesOn) type("stop", after("info depth 5 "));
        const std::string said = run();
        EXPECT_TRUE(has(said, thinkingTime(3000, 50)));
        EXPECT_EQ(has(said, "info depth 5 "), goesOn);
    }
    // The first three iterations finish even so.
    type("go wtime 30000 btime 30000");
    outside->turnClock(100'000, after("Thinking time"));
    const std::string said = run();
    EXPECT_TRUE(has(said, "info depth 3 ") && !has(said, "info depth 4 "));
}

// The accented letters in the log are single bytes.
constexpr char Attempt[] = "## Intento extender el tiempo de b\xFAsqueda\n";
constexpr char Refused[] = "## Tiempo de b\xFAsqueda no extendido. B\xFAsqueda terminada\n";

std::string newTime(std::uint32_t budget) {
    return "## Nuevo tiempo de b\xFAsqueda: " + std::to_string(budget) + "\n";
}

TEST_F(SearchClockTest, BudgetIsDoubledOnceWhileFailingLow) {
    const std::string attempt =
        std::string(Attempt) + "## Tiempo usado: 1000\n## Tiempo disponible: 29000\n";
    for (const bool uci : {true, false}) {
        const char* const mark = uci ? " upperbound " : " --\n";
        if (uci) {
            beginUci("setoption name AspirationWindow value 5");
            type("go wtime 300000 btime 300000");
        } else {
            beginWinBoard("easy\nsetboard " + std::string(Middle) + "\nlevel 0 5 0");
            settings.aspirationWindow = 5;
            type("go");
        }
        outside->turnClock(10'000, after(mark));
        outside->turnClock(10'000, after(mark));
        const std::string said = run();
        EXPECT_TRUE(has(said, thinkingTime(30000, 1000)));
        EXPECT_EQ(count(said, uci ? "bestmove" : "\nmove "), 1);
        EXPECT_EQ(count(log(), attempt + newTime(2000)), 1) << log();
        EXPECT_EQ(count(log(), Attempt), 1);
        EXPECT_EQ(count(log(), Refused), 0);
    }
}

TEST_F(SearchClockTest, BudgetIsDoubledWhereTheClockBearsIt) {
    struct Case {
        const char* go;
        std::uint32_t budget;
        bool extended;
    };
    for (const auto& [go, budget, extended] :
         std::vector<Case>{{"wtime 60000 btime 60000", 100, true},
                           {"wtime 59990 btime 59990", 99, false},
                           {"wtime 50000 btime 50000 winc 10000", 1166, true},
                           {"wtime 50000 btime 50000 winc 9990", 1165, false},
                           {"wtime 100000 btime 1 movestogo 10", 900, true},
                           {"wtime 9000 btime 9000 movestogo 10", 81, false},
                           {"wtime 100000 btime 1 movestogo 1", 9000, false},
                           {"movetime 1000", 100, false}}) {
        beginUci("setoption name AspirationWindow value 5");
        type("go " + std::string(go));
        outside->turnClock(budget * 10, after(" upperbound "));
        if (extended) outside->turnClock(budget * 10, after("info depth 6 "));
        const std::string said = run();
        EXPECT_EQ(count(said, "bestmove"), 1) << go;
        EXPECT_EQ(count(log(), newTime(2 * budget)), extended ? 1 : 0) << go << '\n' << log();
        EXPECT_EQ(count(log(), Refused), extended ? 0 : 1) << go;
    }
    // With the score in the window, no extension is tried.
    beginUci();
    type("go wtime 300000 btime 300000");
    outside->turnClock(10'000, after("info depth 5 "));
    const std::string said = run();
    EXPECT_FALSE(has(said, "info depth 6 ") || has(said, "upperbound"));
    EXPECT_FALSE(has(log(), Attempt));
}

TEST_F(SearchClockTest, UciPonderHit) {
    // The time before the ponder hit counts, although no budget ends the search during that time.
    beginUci();
    type("go ponder wtime 300000 btime 300000");
    outside->turnClock(1'000'000, after("info depth 4 "));
    type("ponderhit", after("info depth 6 "));
    std::string said = run();
    EXPECT_EQ(count(said, "bestmove"), 1);
    EXPECT_FALSE(has(said, "info depth 7 ") || has(said, "##"));
    EXPECT_TRUE(has(log(), "## Search mode switched to normal\n"));

    outside->stepOfPoll = 50;
    const std::uint64_t start = outside->clock;
    type("go ponder movetime 1000");
    type("ponderhit", after("info depth 4 "));
    EXPECT_EQ(count(run(), "bestmove"), 1);
    EXPECT_EQ(outside->clock, start + 1000);

    type("go ponder movetime 10");
    type("stop", after("info depth 5 "));
    EXPECT_EQ(count(run(), "bestmove"), 1);

    // Without pondering, the search starts at once.
    said = search("setoption name Ponder value false\ngo ponder movetime 100");
    EXPECT_TRUE(has(said, thinkingTime(0, 10)) && has(said, "bestmove"));
}

TEST_F(SearchClockTest, WinBoardPonderHit) {
    const std::string start = "level 0 1 0\ntime 100\notim 100\nusermove e2e4";
    const auto beginPondering = [&](const char* moreTime, std::string_view move) {
        begin("xboard");
        type(start);
        outside->turnClock(1000, after("Thinking time"));
        type(moreTime, after("Hint: "));
        outside->turnClock(400, after("\n 4. "));
        type(move, after("\n 5. "));
    };
    beginPondering("time", "quit");
    (void)run();
    std::string noted = log();
    noted.erase(0, noted.find("pondering -> Hint: ") + 19);
    const std::string hint = noted.substr(0, noted.find('\n'));

    // The time before the ponder hit counts.
    beginPondering("time 1800\notim 1800", "usermove " + hint);
    type("force", after("\nmove "));
    std::string said = run();
    EXPECT_EQ(count(said, "\nmove "), 2);
    EXPECT_EQ(count(said, thinkingTime(100, 1)), 1);
    EXPECT_EQ(count(said, "##"), 1);
    EXPECT_TRUE(has(log(),
                    "\n\n## Search mode switched to normal\n## Left time: 1800 Thinking "
                    "time: 30\n"));
    EXPECT_FALSE(has(said.substr(said.find("\n 5. ")), "\n 6"));

    // With time left, the search uses the rest of it.
    beginPondering("time 6000\notim 6000", hint);
    outside->turnClock(600, after("\n 6"));
    type("force", after("\nmove "));
    said = run();
    EXPECT_EQ(count(said, "\nmove "), 2);
    EXPECT_TRUE(has(log(), "## Left time: 6000 Thinking time: 100\n"));
    EXPECT_TRUE(has(said.substr(said.find("\n 5. ")), "\n 6"));
    EXPECT_FALSE(has(said, "\n 7"));

    // A different move starts a new search.
    const std::string other = hint == "a2a3" ? "h2h3" : "a2a3";
    beginPondering("time 6000\notim 6000", "usermove " + other);
    outside->turnClock(10'000, after("Thinking time"));
    type("force", after("\nmove "));
    said = run();
    EXPECT_EQ(count(said, "\nmove "), 2);
    EXPECT_EQ(count(said, thinkingTime(6000, 100)), 1);
    EXPECT_TRUE(has(log(), "## strMovDuranteBusqueda: " + other + "\n"));
}

TEST_F(SearchClockTest, PollsByNodes) {
    using Nodes = std::vector<std::uint32_t>;
    beginUci();
    outside->nodes.clear();
    (void)search("go nodes 70000");
    EXPECT_EQ(outside->nodes, (Nodes{1, 20001, 40001, 60001}));

    outside->nodes.clear();
    outside->stepOfPoll = 10;
    type("go ponder");
    type("ponderhit", at(outside->clock + 30));
    type("stop", at(outside->clock + 50));
    (void)run();
    EXPECT_EQ(outside->nodes, (Nodes{1, 5001, 10001, 30001, 50001}));
}

TEST_F(SearchClockTest, OneLineAPoll) {
    beginUci();
    outside->answers.clear();
    const int before = count(outside->output(), "readyok");
    for (const char* const line : {"go infinite", "isready", "", "isready"}) type(line);
    type("stop\nposition startpos\nisready");
    const std::string said = run();
    std::vector<int> answers;
    for (const int number : outside->answers) answers.push_back(number - before);
    EXPECT_EQ(answers, (std::vector<int>{0, 1, 1, 2}));
    // No line is read while the search unwinds.
    EXPECT_TRUE(said.find("bestmove") < said.rfind("readyok"));
    EXPECT_EQ(count(said, "readyok"), 3);
}

TEST_F(SearchClockTest, StopEndsASearchAtTheNextPoll) {
    beginUci();
    outside->nodes.clear();
    type("go infinite");
    type("stop", after("info depth 5 "));
    EXPECT_EQ(count(run(), "bestmove"), 1);
    EXPECT_LE(searchStats.nodes, outside->nodes.back() + Unwinding);

    // Half a line does not hold up the search.
    outside->stepOfPoll = 200;
    type("go movetime 1000");
    outside->send("sto", after("info depth 3 "));
    EXPECT_EQ(count(run(), "bestmove"), 1);
    outside->send("p\n");
    EXPECT_EQ(search("isready"), "readyok\n");

    beginWinBoard("easy\nsetboard " + std::string(Middle) + "\nlevel 0 60 0");
    for (const char* const word : {"?", "force"}) {
        outside->nodes.clear();
        type("go");
        type(word, after("\n 5. "));
        EXPECT_EQ(count(run(), "\nmove "), 1);
        EXPECT_LE(searchStats.nodes, outside->nodes.back() + Unwinding);
        type("undo");
    }
    type("go");
    type("quit", after("\n 4. "));
    EXPECT_FALSE(has(run(), "\nmove "));
    EXPECT_EQ(program->exitCode, 0);
}

TEST_F(SearchClockTest, EndOfInputEndsWhatHasNoLimit) {
    for (const auto& [go, limited] :
         std::vector<std::pair<const char*, bool>>{{"depth 6", true},
                                                   {"nodes 90000", true},
                                                   {"movetime 1000", true},
                                                   {"wtime 120000 btime 120000", true},
                                                   {"infinite", false},
                                                   {"", false},
                                                   {"ponder", false},
                                                   {"ponder movetime 1000", false}}) {
        beginUci();
        outside->stepOfLook = 10;
        type("go " + std::string(go));
        outside->closeInput(after("info depth 3 "));
        const std::string said = run();
        EXPECT_EQ(count(said, "bestmove"), 1) << go;
        EXPECT_EQ(program->exitCode, 0) << go;
        EXPECT_EQ(searchStats.nodes > PollInterval + Unwinding, limited) << go;
    }
    for (const auto& [lines, limited] : std::vector<std::pair<const char*, bool>>{
             {"sd 6\ngo", true}, {"st 1\ngo", true}, {"analyze", false}}) {
        beginWinBoard("easy\nsetboard " + std::string(Middle));
        outside->stepOfLook = 10;
        type(lines);
        outside->closeInput(after("\n 3. "));
        EXPECT_EQ(count(run(), "\nmove "), limited ? 1 : 0) << lines;
        EXPECT_EQ(program->exitCode, 0) << lines;
        EXPECT_EQ(searchStats.nodes > PollInterval + Unwinding, limited) << lines;
    }
}

}  // namespace
}  // namespace brivok
