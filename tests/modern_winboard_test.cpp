// WinBoard as modern interfaces expect it, line by line.

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "board/board.h"
#include "board/castling.h"
#include "engine_fixture.h"
#include "hash/search_stats.h"
#include "movegen/move_text.h"
#include "program.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/modern/modern_options.h"
#include "shell/modern/time_words.h"

namespace fs = std::filesystem;

namespace brivok {
namespace {

constexpr char MateInOne[] = "setboard 7k/8/5K2/6Q1/8/8/8/8 w - - 0 1";
constexpr char Mated[] = "setboard 7k/6Q1/5K2/8/8/8/8/8 b - - 0 1";
constexpr char Stalemated[] = "setboard 7k/5Q2/5K2/8/8/8/8/8 b - - 0 1";
constexpr char OneReply[] = "setboard 7k/8/8/8/8/6p1/8/r5K1 w - - 0 1";
constexpr char Middle[] =
    "setboard r1bq1rk1/pp2bppp/2n2n2/2pp4/3P4/2N1PN2/PP2BPPP/R1BQ1RK1 w - - 0 9";

bool has(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

int count(const std::string& text, std::string_view part) {
    int found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++found;
    return found;
}

std::string withoutThinking(const std::string& output) {
    std::istringstream lines(output);
    std::string rest;
    for (std::string line; std::getline(lines, line);) {
        const bool thinking = !line.empty() && std::isdigit(line[0]) != 0 &&
                              !line.starts_with("1-0") && !line.starts_with("0-1") &&
                              !line.starts_with("1/2");
        if (!thinking && !line.starts_with("stat01") && !line.starts_with("##") && !line.empty()) {
            rest += line + "\n";
        }
    }
    return rest;
}

/// Runs the program in a folder with this switch.
class ModernWinBoardTest : public ::testing::Test {
protected:
    ModernWinBoardTest() : home(fs::current_path()) {
        std::string name = fs::temp_directory_path() / "brivok-XXXXXX";
        folder = ::mkdtemp(name.data());
        fs::current_path(folder);
        begin("ModernInterface: true\n");
    }
    ~ModernWinBoardTest() override {
        program.reset();
        modernSettings = {};
        fs::current_path(home);
        fs::remove_all(folder);
    }

    void begin(const std::string& ini, const std::string& lines = "xboard\neasy") {
        std::ofstream("brivok.ini") << ini;
        program.reset();
        modernSettings = {};
        program.emplace();
        program->outside.patience = 2000;
        (void)ask(lines);
    }

    /// A line, and the text after which it is typed.
    struct Step {
        std::string line;
        std::string after{};
    };

    /// The new output after these lines. They must not leave a search that needs more of them.
    std::string play(const std::vector<Step>& steps) {
        for (const auto& [line, text] : steps) program->type(line, after(text));
        const std::size_t before = program->output().size();
        program->run();
        return program->output().substr(before);
    }

    /// The same for lines that arrive at once, each as its own piece of input.
    std::string ask(const std::string& lines) {
        std::vector<Step> steps;
        std::istringstream all(lines);
        for (std::string line; std::getline(all, line);) steps.push_back({line});
        return play(steps);
    }

    /// The same without the lines that show thinking.
    std::string answer(const std::string& lines) { return withoutThinking(ask(lines)); }

    /// Whether the game on the board has reached the position after these moves.
    static bool isOnBoard(const std::string& moves) {
        Board expected;
        expected.NewGame();
        return playMoves(expected, moves) && expected.computeHashKey() == theBoard.hashKey;
    }

    std::string lastMove() const {
        const std::string& output = program->output();
        const std::size_t at = output.rfind("\nmove ") + 6;
        return output.substr(at, output.find('\n', at) - at);
    }

    fs::path home;
    fs::path folder;
    std::optional<Program> program;
};

constexpr char Depth4[] = "\n4 ";

// --- Analysing ---------------------------------------------------------------------------------

TEST_F(ModernWinBoardTest, AnalysisFollowsTheBoard) {
    struct Case {
        std::string line;
        std::string moves;  ///< on the board afterwards
        std::string answer;
    };
    for (const auto& [line, moves, answer] : std::vector<Case>{
             {"usermove e7e5", "e2e4 e7e5", ""},
             {"Nf6", "e2e4 g8f6", ""},
             {"usermove e1e8", "e2e4", "Illegal move: e1e8\n"},
             {"undo", "", ""},
             {"remove", "e2e4", "Error (no move to take back): remove\n"},
             {"level 0 1:30 0.5", "e2e4", ""},
             {"setboard nonsense", "e2e4", "Error ("},
             {"setboard rnbqkbnr/pppppppp/8/8/8/P7/1PPPPPPP/RNBQKBNR b KQkq - 0 1", "a2a3", ""},
             {"new", "", ""},
             {"variant normal", "", ""},
             {"analyze", "e2e4", ""},
             {"force", "e2e4", ""},
             {"result 1-0 {White resigns}", "e2e4", ""},
             {"hint", "e2e4", "Hint: "},
             {"bk", "e2e4", " There is no opening book.\n"}}) {
        (void)ask("new\nforce\nusermove e2e4");
        const std::string said = withoutThinking(
            play({{"analyze"}, {line, Depth4}, {"ping 1", Depth4}, {"exit"}, {"ping 2"}}));
        EXPECT_TRUE(said.starts_with(answer)) << line << ": " << said;
        EXPECT_TRUE(said.ends_with("pong 1\npong 2\n")) << line << ": " << said;
        EXPECT_TRUE(isOnBoard(moves)) << line;
    }
    EXPECT_EQ(timeControl.ownTime, 9000U);
    EXPECT_EQ(withoutThinking(play({{"analyze"}, {"noise", Depth4}, {"exit"}})),
              "Error (Unknown command): noise\n");
    EXPECT_EQ(count(play({{"analyze"}, {"go", Depth4}, {"?", Depth4}}), "\nmove "), 1);
}

TEST_F(ModernWinBoardTest, AnAnalysisThatEndsStaysOne) {
    for (const char* position :
         {MateInOne, Mated, Stalemated, "setboard 7k/8/8/8/8/8/8/K7 w - - 0 1",
          "setboard 7k/8/8/8/8/8/8/K7 b - - 0 1"}) {
        (void)ask(std::string("new\n") + position);
        EXPECT_EQ(
            answer("analyze\nping 1\nhard\neasy\ntime 100\nhint x\nnoise\nping 2").substr(0, 7),
            "pong 1\n")
            << position;
        EXPECT_TRUE(has(ask("."), "stat01: ")) << position;
        const std::string said = play({{Middle}, {"exit", Depth4}, {"ping 3"}});
        EXPECT_EQ(withoutThinking(said), "pong 3\n") << "it goes on after " << position;
        EXPECT_EQ(answer("usermove a2a3\nping 4"), "pong 4\n") << "no reply after an analysis";
    }
    // A single legal move is analysed like any other, even in a finished game.
    (void)ask(OneReply);
    const std::string said = play({{"result *"}, {"analyze"}, {"exit", Depth4}});
    EXPECT_TRUE(has(said, " Kg2")) << said;
    EXPECT_EQ(withoutThinking(said), "");
    // Nor does one that has nobody left to listen begin again.
    program->type("new\nanalyze");
    program->outside.closeInput(after(Depth4));
    program->run();
    EXPECT_EQ(program->exitCode, 0);
}

// --- Pondering ---------------------------------------------------------------------------------

TEST_F(ModernWinBoardTest, CommandsEndPonderingAndTakeEffect) {
    struct Case {
        std::vector<Step> steps;
        std::string moves;  ///< on the board afterwards; "REPLY" is the engine's first move
        int engineMoves = 1;
    };
    for (const auto& [steps, moves, engineMoves] :
         std::vector<Case>{{{{"remove"}}, ""},
                           {{{"undo"}, {"force"}}, "e2e4"},
                           {{{"force"}, {"undo"}}, "e2e4"},
                           {{{"new"}}, ""},
                           {{{"variant normal"}}, ""},
                           {{{"setboard broken"}}, "e2e4 REPLY"},
                           {{{"result *"}, {"usermove a2a3"}}, "e2e4 REPLY a2a3"},
                           {{{"level 0 2 0"}}, "e2e4 REPLY"},
                           {{{"st 7.5"}}, "e2e4 REPLY"},
                           {{{"sd 3"}}, "e2e4 REPLY"},
                           {{{"memory 8"}}, "e2e4 REPLY"},
                           {{{"option MultiPV=1"}}, "e2e4 REPLY"},
                           {{{"easy"}}, "e2e4 REPLY"},
                           {{{"white"}}, "e2e4 REPLY"},
                           {{{"analyze"}, {"exit", Depth4}}, "e2e4 REPLY"},
                           {{{"usermove a2a4"}, {"remove"}, {"force"}}, "e2e4"},
                           {{{"go"}, {"?", Depth4}, {"force"}, {"undo"}}, "e2e4 REPLY", 2},
                           {{{"post"}, {"noise"}, {"usermove e9e9"}, {"usermove a1a8"}, {"force"}},
                            "e2e4 REPLY"}}) {
        begin("ModernInterface: true\n");
        std::vector<Step> script = {{"hard"}, {"sd 5"}, {"usermove e2e4"}};
        script.insert(script.end(), steps.begin(), steps.end());
        script[3].after = "Hint: ";
        const std::string said = play(script);
        const std::string& line = steps[0].line;
        std::string game = moves;
        if (const std::size_t at = game.find("REPLY"); at != std::string::npos) {
            const std::size_t move = said.find("\nmove ") + 6;
            game.replace(at, 5, said.substr(move, said.find('\n', move) - move));
        }
        EXPECT_EQ(count(said, "\nmove "), engineMoves) << line << said;
        EXPECT_TRUE(isOnBoard(game)) << line << said;
        EXPECT_EQ(count(said, "Illegal move"), line == "post" ? 2 : 0) << line;
    }
}

TEST_F(ModernWinBoardTest, ThePonderedMoveInAnyNotationIsAHit) {
    for (const bool inSan : {true, false}) {
        begin("ModernInterface: true\n");
        const std::string first = play({{"hard"}, {"sd 8"}, {"usermove e2e4"}, {"easy", "Hint: "}});
        const std::size_t at = first.find("Hint: ") + 6;
        const std::string san = first.substr(at, first.find('\n', at) - at);
        begin("ModernInterface: true\n");
        const std::string said = play({{"hard"},
                                       {"sd 8"},
                                       {"usermove e2e4"},
                                       {"hint", "Hint: "},
                                       {"usermove " + (inSan ? san : std::string("a2a4"))},
                                       {"force", "\nmove "}});
        EXPECT_TRUE(has(said, "Hint: " + san + "\n"));
        EXPECT_EQ(count(said, "\n5 ") > 0, true);
        EXPECT_EQ(count(said, "\nmove "), 2) << said;
        const bool hit = count(said, "## (Think)") == 1;
        EXPECT_EQ(hit, inSan) << "a hit goes on with the same search";
    }
}

// --- Clocks ------------------------------------------------------------------------------------

TEST_F(ModernWinBoardTest, TimeControls) {
    struct Case {
        std::string lines;
        std::uint32_t left;    ///< centiseconds
        std::uint32_t budget;  ///< centiseconds
    };
    const std::string position = Middle;
    for (const auto& [lines, left, budget] :
         std::vector<Case>{{"level 0 0:10 0.1", 1000, 26},
                           {"level 0 5:30 0", 33000, 1100},
                           {"level 0 0.5 0", 3000, 50},
                           {"level 0 5 0\n" + position, 30000, 1000},
                           {position + "\nlevel 0 5 0", 30000, 1000},
                           {"level 0 5 0\ntime 1500\n" + position, 1500, 18},
                           {"level 0 5 0\nvariant nocastle", 30000, 1000},
                           {"level 0 5 0\ntime 100\nnew", 30000, 1000},
                           {"level 40 5 0\n" + position, 30000, 675},
                           {"st 1\n" + position, 0, 100},
                           {position + "\nst 0.25", 0, 25},
                           {"st 1:02.5\nnew", 0, 6250},
                           {"st 1\nsd 3", 0, 100},
                           {"sd 3\nlevel 0 5 0\n" + position, 30000, 1000},
                           {"level 0 5 0\ntime -300", 0, 1}}) {
        begin("ModernInterface: true\n");
        const std::string said = play({{lines}, {"go"}, {"?", "(Think)"}});
        const std::string expected = "## (Think) Left time: " + std::to_string(left) +
                                     " Thinking time: " + std::to_string(budget) + "\n";
        EXPECT_TRUE(has(said, expected)) << lines << ": " << said.substr(0, 200);
        EXPECT_EQ(count(said, "\nmove "), 1) << lines;
    }
    (void)ask("level 40 1:30 2.5\nforce");
    EXPECT_EQ(timeControl.movesPerSession, 40U);
    EXPECT_EQ(timeControl.ownIncrement, 250U);

    // What is not understood changes nothing.
    const std::uint32_t before = timeControl.ownTime;
    for (const char* line : {"level",
                             "level 0",
                             "level 0 5",
                             "level x 5 0",
                             "level 0 -5 0",
                             "level 0 5 -1",
                             "level 0 5:61 0",
                             "level 0 99999999999 0",
                             "level 0 1 1e9",
                             "st",
                             "st -1",
                             "st 5s",
                             "st 99999999999",
                             "sd",
                             "sd -4",
                             "sd deep",
                             "time",
                             "time soon",
                             "otim 1x",
                             "memory",
                             "memory -1",
                             "memory 0",
                             "memory lots",
                             "option",
                             "option Nothing=1",
                             "option MultiPV=65",
                             "egtpath",
                             "egtpath syzygy /x"}) {
        EXPECT_TRUE(answer(line).starts_with("Error (")) << line;
    }
    EXPECT_EQ(timeControl.ownTime, before);
    EXPECT_EQ(timeControl.movesPerSession, 40U);
}

TEST_F(ModernWinBoardTest, DepthLimitsBesideTheClock) {
    // It outlives a position, ends with the game, and does not turn off the clock.
    EXPECT_FALSE(has(ask("sd 4\nlevel 0 5 0\n" + std::string(Middle) + "\ngo"), "\n5 "));
    EXPECT_TRUE(has(play({{"new"}, {"go"}, {"?", "\n6 "}}), "\nmove "));
    program->outside.stepOfPoll = 400;
    EXPECT_FALSE(has(ask("sd 30\nst 2\ngo"), "\n30 "));
    program->outside.stepOfPoll = 0;
    EXPECT_TRUE(has(play({{"sd 2"}, {"sd 0"}, {"go"}, {"?", "\n6 "}}), "\nmove "));
}

// --- While the engine thinks -------------------------------------------------------------------

TEST_F(ModernWinBoardTest, LinesDuringThinking) {
    struct Case {
        std::string line;
        bool moves;  ///< whether the engine still makes its move
        std::string answer = "";
    };
    for (const auto& [line, moves, answer] : std::vector<Case>{
             {"force", false},
             {"new", false},
             {"setboard 4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", false},
             {"result *", false},
             {"playother", false},
             {"analyze\nexit", false},
             {"variant normal\nforce", false},
             {"level 0 1 0", true},
             {"st 5", true},
             {"sd 9", true},
             {"memory 4", true},
             {"option MultiPV=2", true},
             {"post\nhard\neasy\nname x\nrating 1 2\ncomputer\nics -\ndraw\npause", true},
             {"resume\nrandom\naccepted x\nrejected x\ngo\nexit\nxboard", true},
             {"ping 3", true, "pong 3\n"},
             {"usermove e2e4", true, "Error (it is the engine's turn): "},
             {"e4", true, "Error (it is the engine's turn): e4\n"},
             {"nonsense", true, "Error (Unknown command): nonsense\n"}}) {
        begin("ModernInterface: true\n");
        const std::string said =
            withoutThinking(play({{Middle}, {"go"}, {line, Depth4}, {"?"}, {"ping 9"}, {"force"}}));
        EXPECT_EQ(count("\n" + said, "\nmove "), moves ? 1 : 0) << line << ": " << said;
        EXPECT_TRUE(has(said, answer)) << line << ": " << said;
        EXPECT_TRUE(has(said, "pong 9\n")) << line << ": " << said;
        if (moves) {
            EXPECT_LT(said.find("move "), said.find("pong ")) << line;
        }
    }
    // A put-off control takes effect after the move, and a later clock after it.
    const std::string position = Middle;
    (void)play({{position}, {"go"}, {"level 0 3 0", Depth4}, {"time 700"}, {"?"}, {"force"}});
    EXPECT_EQ(timeControl.ownStart, 18000U);
    EXPECT_EQ(timeControl.ownTime, 700U);
    // A retraction during thinking: the user's move is back in hand.
    (void)play({{"new"}, {"usermove e2e4"}, {"undo", Depth4}, {"force"}});
    EXPECT_TRUE(isOnBoard(""));
}

TEST_F(ModernWinBoardTest, AMoveAlwaysComes) {
    for (const char* lines : {"go\n?", "?\ngo\n?", "st 0\ngo", "time 0\notim 0\ngo"}) {
        (void)ask(std::string("new\n") + Middle);
        program->type(lines);
        program->outside.stepOfPoll = 50;
        const std::string said = play({});
        program->outside.stepOfPoll = 0;
        ASSERT_EQ(count(said, "\nmove "), 1) << lines;
        (void)ask("force\nundo");
        EXPECT_NE(parseMove(theBoard, lastMove()), NoMove) << lines;
    }
    // A second "go" makes the engine play the other side too.
    (void)ask(std::string("new\nsd 4\n") + Middle);
    EXPECT_EQ(count(ask("go\n?\ngo\n?"), "\nmove "), 2);
    // A reserve for each move leaves less of the clock.
    EXPECT_TRUE(has(play({{"force"}, {"option Move Overhead=500"}, {"time 1000"}, {"go"}, {"?"}}),
                    "Left time: 951 "));
}

// --- Results -----------------------------------------------------------------------------------

TEST_F(ModernWinBoardTest, ResultsAreClaimedForTheBoardAlone) {
    EXPECT_EQ(answer(std::string(MateInOne) + "\ngo"), "move g5g7\n1-0 {White mates}\n");
    EXPECT_EQ(answer("go\ngo"), "1-0 {White mates}\n1-0 {White mates}\n") << "in a mated position";
    EXPECT_EQ(answer(std::string(Stalemated) + "\ngo"), "1/2-1/2 {Stalemate}\n");
    EXPECT_EQ(answer("setboard 7k/8/8/8/8/8/8/K7 w - - 0 1\ngo"),
              "1/2-1/2 {Insufficient material}\n");
    // What a search left is not a result of this position.
    (void)ask(Middle);
    theSearcher.gameOutcome = GameOutcome::WhiteMates;
    theSearcher.nodeLimit = 1;
    theSearcher.maxIteration = 1;
    EXPECT_EQ(count(answer("sd 4\ngo"), "{"), 0);
    EXPECT_GT(theSearcher.iteration, 3);
}

TEST_F(ModernWinBoardTest, AFinishedGameIsReopened) {
    const std::string mate = std::string("sd 4\n") + MateInOne + "\ngo";
    for (const auto& [lines, moves] : std::vector<std::pair<std::string, int>>{
             {"usermove h8g8", 0},
             {"undo", 1},  // it is the engine's turn again
             {std::string(Middle) + "\ngo", 1},
             {"new\nsd 4\nusermove e2e4", 1},
             {"force\nundo\nusermove f6e6\nusermove h8h7\ngo", 1},
             {"variant normal", 1}}) {  // the engine plays White
        begin("ModernInterface: true\n");
        (void)ask(mate);
        EXPECT_EQ(count(ask(lines), "\nmove "), moves) << lines;
    }
    EXPECT_EQ(answer("new\nforce\nundo\nremove\nusermove e2e5\nusermove\ne2e5"),
              "Error (no move to take back): undo\nError (no move to take back): remove\n"
              "Illegal move: e2e5\nIllegal move: usermove\nIllegal move: e2e5\n");
}

TEST_F(ModernWinBoardTest, AResignationTakenBackIsNotRepeatedAtOnce) {
    begin("ModernInterface: true\nResignValue: 9000\n");
    (void)ask(std::string("sd 6\n") + Middle);
    for (const int resignations : {0, 0, 0, 0, 0, 1}) {
        EXPECT_EQ(count(answer("go"), "resigns"), resignations);
    }
    EXPECT_EQ(count(answer("force\nundo\ngo"), "resigns"), 0);
}

TEST_F(ModernWinBoardTest, BrokenPositionsLeaveEverything) {
    (void)ask("level 0 3 0\nforce\ntime 4000\nusermove e2e4\nusermove e7e5");
    const std::uint64_t key = theBoard.hashKey;
    for (const char* line : {"setboard", "setboard x", "setboard 8/8/8/8/8/8/8/8 w - - 0 1",
                             "setboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1BNR w KQkq - 0 1"}) {
        const std::string said = answer(line);
        EXPECT_TRUE(said.starts_with("Error (") && count(said, "\n") == 1) << said;
    }
    EXPECT_EQ(theBoard.hashKey, key);
    EXPECT_EQ(timeControl.ownTime, 4000U);
    EXPECT_EQ(answer("setboard 4k3/4r3/8/8/8/8/8/4K3 w - - 0 1\nblack"),
              "Error (the king could be taken): black\n");
}

TEST_F(ModernWinBoardTest, TakingBackAlsoTakesBackWhoseMoveItIs) {
    (void)ask("force\nusermove e2e4\nwhite\nundo");
    EXPECT_EQ(theBoard.sideToMove, White);
    EXPECT_TRUE(isOnBoard(""));
    (void)ask("usermove e2e4\nusermove e7e5\nblack\nusermove d7d6\nremove");
    EXPECT_EQ(theBoard.sideToMove, Black);
    EXPECT_TRUE(isOnBoard("e2e4"));
}

TEST_F(ModernWinBoardTest, Variants) {
    const std::string array = "setboard 1rk1r3/pppppppp/8/8/8/8/PPPPPPPP/1RK1R3 w KQkq - 0 1";
    (void)ask("force\nusermove e2e4\nlevel 0 4 0\nvariant fischerandom");
    EXPECT_EQ(settings.variant, Variant::Fischerandom);
    EXPECT_TRUE(isOnBoard(""));
    EXPECT_EQ(timeControl.ownTime, 24000U);
    for (const char* castling : {"O-O", "0-0", "c1e1", "O-O+"}) {
        EXPECT_EQ(answer(array + "\nusermove " + castling), "") << castling;
    }
    EXPECT_EQ(answer("variant crazyhouse"), "Error (unsupported variant): variant crazyhouse\n");
    EXPECT_EQ(settings.variant, Variant::Fischerandom);
    (void)ask("variant normal");
    EXPECT_EQ(settings.variant, Variant::Normal);
    (void)ask("variant nocastle\nnew");
    EXPECT_EQ(settings.variant, Variant::Normal) << "for one game";
    EXPECT_EQ(theBoard.castling, AllRights);
}

// --- What the interface is told ----------------------------------------------------------------

TEST_F(ModernWinBoardTest, Features) {
    const std::string said = answer("protover 2");
    for (const char* feature :
         {"ping=1", "setboard=1", "usermove=1", "playother=1", "analyze=1", "colors=0", "ics=0",
          "name=0", "reuse=1", "sigint=0", "sigterm=0", "debug=1", "memory=1", "egt=\"nalimov\"",
          "variants=\"normal,fischerandom,nocastle\"", "option=\"MultiPV -spin 1 1 64\""}) {
        EXPECT_TRUE(has(said, std::string(" ") + feature)) << feature;
    }
    EXPECT_TRUE(said.ends_with("feature done=1\n"));
    EXPECT_EQ(answer("protover 1\naccepted ping\nrejected\n?\n.\nname x\nrating 1 2\ncomputer\n"
                     "ics -\ndraw\npause\nresume\nrandom\nexit"),
              "");
    (void)ask("option MultiPV=3\noption Clear Hash\nmemory 8");
    EXPECT_EQ(modernSettings.lines, 3);
    fs::create_directory("tables here");
    EXPECT_EQ(answer("egtpath nalimov tables here"), "");
    EXPECT_EQ(settings.egtbDir, "tables here");

    EXPECT_TRUE(has(play({{Middle}, {"go"}, {"?"}}), "## (Think)"));
    EXPECT_FALSE(has(play({{"force"}, {"rejected debug"}, {"go"}, {"?"}}), "##"));
    EXPECT_TRUE(has(play({{"accepted debug"}, {"force"}, {"go"}, {"?"}}), "## (Think)"));
}

TEST_F(ModernWinBoardTest, ThinkingLines) {
    const std::string said = ask(std::string(Middle) + "\nsd 7\ngo");
    std::istringstream lines(said);
    std::string before;
    int shown = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || std::isdigit(line[0]) == 0) continue;
        ++shown;
        std::istringstream words(line);
        std::string depth;
        std::string score;
        std::uint32_t time = 0;
        std::uint32_t nodes = 0;
        std::string moves;
        ASSERT_TRUE(words >> depth >> score >> time >> nodes) << line;
        std::getline(words, moves);
        EXPECT_EQ(line.find_first_of(".[<{(:|"), std::string::npos) << line;
        const std::string told = depth + ' ' + score + moves;
        EXPECT_NE(told, before);
        before = told;
        EXPECT_NE(moves, "") << line;
    }
    EXPECT_GT(shown, 4);
    EXPECT_TRUE(has(ask(std::string(MateInOne) + "\ngo"), "\n3 100001 "));
    EXPECT_TRUE(has(ask("setboard 4k3/R7/8/8/8/8/8/1R5K b - - 0 1\nsd 5\ngo"), " -100001 "));
    // Several lines, sorted, each beginning with another move.
    const std::string many = ask(std::string("option MultiPV=2\nsd 4\n") + Middle + "\ngo");
    EXPECT_EQ(count(many, Depth4), 2) << many;
    EXPECT_FALSE(has(ask(std::string("nopost\n") + Middle + "\ngo"), "\n3 "));
}

TEST_F(ModernWinBoardTest, NodesAreThoseOfThePlainHandler) {
    const std::vector<std::string> positions = {
        Middle, "setboard 2r3k1/pbr1q2p/1p2pnp1/3p4/3P1P2/1P1BR3/PB1Q2PP/5RK1 w - - 0 1",
        "setboard 6k1/5ppp/8/8/2b5/8/r4PPP/1R4K1 w - - 0 1",
        "setboard 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
        "setboard r1bq1rk1/pp2ppbp/2np1np1/8/3NP3/2N1BP2/PPPQ2PP/R3KB1R w KQ - 0 9"};
    for (const char* posting : {"post", "nopost"}) {
        std::vector<std::uint32_t> nodes[2];
        std::string said[2];
        for (const bool modern : {false, true}) {
            begin(modern ? "ModernInterface: true\n" : "");
            settings.aspirationWindow = 2;  // for passes that leave it
            (void)ask(posting);
            for (const std::string& position : positions) {
                said[modern] += ask("new\n" + position + "\nsd 6\ngo");
                nodes[modern].push_back(searchStats.nodes);
            }
        }
        const bool posts = posting == std::string_view("post");
        EXPECT_EQ(has(said[0], " ++\n") && has(said[0], " --\n"), posts);
        EXPECT_EQ(has(said[1], "!\n") && has(said[1], "?\n"), posts);
        EXPECT_EQ(nodes[0], nodes[1]) << posting;
    }
}

TEST_F(ModernWinBoardTest, Advice) {
    EXPECT_EQ(answer(std::string(MateInOne) + "\nhint"), "Hint: Qg7#\n");
    EXPECT_EQ(answer("go"), "move g5g7\n1-0 {White mates}\n") << "a hint leaves nothing behind";
    EXPECT_EQ(answer("hint\nbk"), " There is no opening book.\n") << "mated";
    const std::string said =
        withoutThinking(play({{Middle}, {"go"}, {"hint", Depth4}, {"?", "Hint: "}}));
    EXPECT_TRUE(has(said, "move "));
}

// A switch of the protocol brings nothing of a search along.
TEST_F(ModernWinBoardTest, AfterUci) {
    begin("ModernInterface: true\n", "uci");
    (void)ask("position fen 7k/8/5K2/6Q1/8/8/8/8 w - - 0 1\ngo nodes 100 depth 2");
    (void)ask("xboard\neasy\nforce\nusermove e2e4\nusermove e7e5");
    EXPECT_EQ(count(play({{"go"}, {"?", "\n6 "}}), "\nmove "), 1);
    EXPECT_FALSE(has(program->output(), "mates}"));
}

TEST(TimeWordsTest, Times) {
    const auto seconds = [](std::string_view word) {
        return readTime(word, CentisecondsPerSecond);
    };
    EXPECT_EQ(seconds("7"), 700U);
    EXPECT_EQ(seconds("0.25"), 25U);
    EXPECT_EQ(seconds(".5"), 50U);
    EXPECT_EQ(seconds("1:30.5"), 9050U);
    EXPECT_EQ(readTime("0.1", CentisecondsPerMinute), 600U);
    EXPECT_EQ(readTime("2:05", CentisecondsPerMinute), 12500U);
    for (const char* word : {"", ".", ":", "1:", ":30", "1:60", "1:2:3", "-1", "1,5", "1.x", "1e3",
                             "16000001", "99999999999999999999", "200000:00"}) {
        EXPECT_FALSE(seconds(word)) << word;
    }
}

}  // namespace
}  // namespace brivok
