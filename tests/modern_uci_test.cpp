// UCI with the modern interface switched on, as an interface speaks it.

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "board/piece_values.h"
#include "book/opening_book.h"
#include "hash/search_stats.h"
#include "program.h"
#include "search/searcher.h"
#include "shell/base/settings.h"
#include "shell/modern/modern_options.h"

namespace brivok {
namespace {

namespace fs = std::filesystem;

constexpr char Middle[] =
    "r3r1k1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10";
constexpr char MateInOne[] = "7k/8/5KQ1/8/8/8/8/8 w - - 0 1";
constexpr char MateInTwo[] = "kbK5/pp6/1P6/8/8/8/8/R7 w - - 0 1";
constexpr char Mated[] = "7k/6Q1/6K1/8/8/8/8/8 b - - 0 1";
constexpr char Stalemate[] = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1";
constexpr char OneReply[] = "k7/8/1K6/8/8/8/8/7R b - - 0 1";

bool has(std::string_view text, std::string_view part) { return text.find(part) != text.npos; }

std::vector<std::string> linesOf(const std::string& text, std::string_view start = "") {
    std::istringstream all(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(all, line);) {
        if (line.starts_with(start)) lines.push_back(line);
    }
    return lines;
}

/// The words that follow `key` in a line, up to `count` of them.
std::string behind(const std::string& line, const std::string& key, int count = 1) {
    std::istringstream words(line);
    std::string word;
    while (words >> word && word != key) {
    }
    std::string found;
    for (; count > 0 && words >> word; --count) found += (found.empty() ? "" : " ") + word;
    return found;
}

std::vector<std::string> scored(const std::string& output) {
    std::vector<std::string> lines = linesOf(output, "info depth");
    std::erase_if(lines, [](const std::string& line) { return !has(line, " score "); });
    return lines;
}

std::string complaints(const std::string& output) {
    std::string all;
    for (const std::string& line : linesOf(output, "info string ")) all += line.substr(12) + "\n";
    return all;
}

/// The words of the only "bestmove" line; empty if there is none.
std::string answerOf(const std::string& output) {
    const std::vector<std::string> answers = linesOf(output, "bestmove ");
    EXPECT_LE(answers.size(), 1U) << output;
    return answers.empty() ? "" : behind(answers[0], "bestmove", 3);
}

std::string bestMove(const std::string& output) {
    const std::string answer = answerOf(output);
    return answer.substr(0, answer.find(' '));
}

/// Runs in an empty folder, with the switch on unless a test writes another file.
class ModernUciTest : public ::testing::Test {
protected:
    ModernUciTest() : home(fs::current_path()) {
        std::string name = fs::temp_directory_path() / "brivok-XXXXXX";
        folder = ::mkdtemp(name.data());
        fs::current_path(folder);
        begin("ModernInterface: true\n");
    }
    ~ModernUciTest() override {
        program.reset();
        modernSettings = {};
        fs::current_path(home);
        fs::remove_all(folder);
    }

    /// Starts the program with these settings, under UCI.
    void begin(const std::string& file) {
        std::ofstream("brivok.ini", std::ios::binary) << file;
        program.reset();
        modernSettings = {};
        outside.emplace();
        program.emplace(*outside);
        ask("uci");
    }

    /// Types a line and runs until the program waits for the next one; returns the new output.
    std::string ask(std::string_view line) {
        type(line);
        return run();
    }
    std::string askAt(std::string_view fen, std::string_view line) {
        ask("position fen " + std::string(fen));
        return ask(line);
    }
    void type(std::string_view line, const Moment& when = now()) { outside->type(line, when); }
    std::string run() {
        const std::size_t before = outside->output().size();
        program->run();
        return outside->output().substr(before);
    }

    fs::path home;
    fs::path folder;
    std::optional<FakePlatform> outside;
    std::optional<Program> program;
};

// --- Commands -----------------------------------------------------------------------------------

TEST_F(ModernUciTest, AnswersUciAgainAndReadsTheWholeFile) {
    const std::string list = ask("uci");
    EXPECT_TRUE(list.starts_with("id name Brivok"));
    EXPECT_TRUE(list.ends_with("uciok\n"));
    EXPECT_TRUE(has(list, "option name UCI_Chess960 type check default false\n"));
    begin("ModernInterface: true\nHashMB: 3\n");
    EXPECT_TRUE(has(outside->output(), "option name Hash type spin default 3 "));
}

TEST_F(ModernUciTest, SetsOptions) {
    EXPECT_EQ(ask("setoption name hash value 2"), "");
    EXPECT_EQ(settings.hashMB, 2U);
    EXPECT_EQ(ask(" setoption  name Move   Overhead\tvalue 120"), "");
    EXPECT_EQ(modernSettings.moveOverhead, 120);
    EXPECT_EQ(ask("setoption name NalimovPath value /No Where/My  Tables "), "");
    EXPECT_EQ(settings.egtbDir, "/No Where/My  Tables");
    EXPECT_EQ(ask("setoption name BookFile value value name.bin"), "");
    EXPECT_EQ(settings.bookFileName, "value name.bin");
    EXPECT_EQ(ask("setoption name Clear Hash"), "");

    for (const char* line :
         {"setoption", "setoption name", "setoption Hash value 2", "setoption name value 2",
          "setoption name Hash value 5000", "setoption name Hash value many", "setoption name Hash",
          "setoption name NoSuchThing value 1"}) {
        EXPECT_EQ(linesOf(ask(line), "info string ").size(), 1U) << line;
    }
    EXPECT_EQ(settings.hashMB, 2U);
}

TEST_F(ModernUciTest, IsSilentWhereThereIsNothingToSay) {
    for (const char* line : {"", "   ", "debug on", "register later", "ponderhit", "stop",
                             "ucinewgame", "nonsense", "UCI"}) {
        EXPECT_EQ(ask(line), "") << line;
    }
    EXPECT_EQ(ask("\tisready  "), "readyok\n");
    ask("quit");
    EXPECT_EQ(program->exitCode, 0);
}

TEST_F(ModernUciTest, TellsWhatASearchCannotTake) {
    ask("position fen " + std::string(Middle));
    type("go infinite");
    for (const char* line : {"position startpos", "setoption name Hash value 2", "ucinewgame",
                             "go depth 1", "genmoves", "xboard", "debug on", "nonsense"}) {
        type(line);
    }
    type("uci\nisready");
    type("stop", after("readyok"));
    const std::string output = run();
    EXPECT_EQ(linesOf(output, "info string ").size(), 6U) << output;
    EXPECT_TRUE(has(output, "uciok\n"));
    EXPECT_EQ(settings.hashMB, 1U);
    EXPECT_EQ(theBoard.fiftyCount, 0U);
    EXPECT_EQ(theBoard.gamePly(), 18U);
    EXPECT_NE(bestMove(output), "");
}

// --- Positions ----------------------------------------------------------------------------------

TEST_F(ModernUciTest, StopsAtAWordThatIsNoMove) {
    const std::string output = ask("position startpos moves e2e4 e7e5 e1g1 g1f3");
    EXPECT_TRUE(has(complaints(output), "e1g1"));
    EXPECT_EQ(theBoard.gamePly(), 2U);
    EXPECT_TRUE(has(output, " 1 | R | N | B | Q | K | B | N | R | 1"));
}

TEST_F(ModernUciTest, KeepsThePositionOfBefore) {
    ask("position startpos moves e2e4");
    const std::uint64_t key = theBoard.hashKey;
    for (const char* line :
         {"position", "position e2e4", "position startpos d2d4", "position fen",
          "position fen 8/8/8/8/8/8/8/8 w - - 0 1 moves e7e5", "position fen rubbish moves e7e5",
          "position fen rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNX w KQkq - 0 1 moves e2e4"}) {
        EXPECT_EQ(linesOf(ask(line), "info string ").size(), 1U) << line;
        EXPECT_EQ(theBoard.hashKey, key) << line;
    }
}

TEST_F(ModernUciTest, PrintsTheDiagramsOfThePlainHandler) {
    const char* const Lines[] = {
        "position startpos",
        "position startpos moves e2e4 c7c5 g1f3",
        "position fen r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R3K2R w KQkq - 0 1",
        "position fen r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R3K2R w KQkq - 0 1 moves e1g1 e8c8",
    };
    std::vector<std::string> modern;
    for (const char* line : Lines) modern.push_back(ask(line));
    begin("");
    for (std::size_t i = 0; i < std::size(Lines); ++i) EXPECT_EQ(ask(Lines[i]), modern[i]);
}

TEST_F(ModernUciTest, CastlesAsKingOntoRook) {
    constexpr char Castling[] = "1rk3r1/pppppppp/8/8/8/8/PPPPPPPP/1RK3R1 w KQkq - 0 1";
    const std::string searched = "go depth 3 searchmoves c1g1";
    // Without the option the moves are read all the same.
    ask("setoption name PlayFRC value true");
    const std::string letters = askAt(Castling, searched);
    EXPECT_EQ(bestMove(letters), "O-O");

    ask("setoption name UCI_Chess960 value true");
    const std::string output = askAt(Castling, searched);
    EXPECT_EQ(bestMove(output), "c1g1");
    EXPECT_TRUE(has(scored(output).back(), " pv c1g1 ")) << output;
    EXPECT_FALSE(has(output, "O-O"));
    EXPECT_EQ(complaints(ask("position fen " + std::string(Castling) + " moves c1g1 c8b8")), "");
    EXPECT_EQ(theBoard.gamePly(), 2U);
    // So is the expected reply, in the position behind the best move.
    const std::string reply =
        askAt("rnbqk2r/pppp1ppp/5n2/2b1p3/2B1P3/2N2N2/PPPP1PPP/R1BQ1RK1 w kq - 0 1", "go depth 3");
    EXPECT_EQ(answerOf(reply), "f3e5 ponder e8h8");
}

// --- The words of go ----------------------------------------------------------------------------

TEST_F(ModernUciTest, ReadsAllWordsOfGo) {
    const std::string output = askAt(Middle, "go searchmoves a3a4 b2b4 a3a4 b2b3 depth 3");
    const std::vector<std::string> lines = scored(output);
    ASSERT_FALSE(lines.empty());
    for (const std::string& line : lines) {
        EXPECT_TRUE(has("a3a4 b2b4 b2b3", behind(line, "pv"))) << line;
    }
    EXPECT_EQ(complaints(output), "");
    // A single move is searched too, if it was asked for.
    EXPECT_EQ(behind(scored(ask("go searchmoves b2b3 depth 4")).back(), "depth"), "4");

    type("go infinite depth 3");
    type("isready", at(1000));
    type("stop", at(2000));
    const std::string ended = run();
    EXPECT_LT(ended.find("readyok"), ended.find("bestmove"));
    EXPECT_EQ(behind(scored(ended).back(), "depth"), "3");
}

TEST_F(ModernUciTest, TellsWhichWordsOfGoItDoesNotUnderstand) {
    struct Case {
        const char* go;
        const char* told;  // part of the only complaint
    };
    for (const auto& [go, told] : {
             Case{"go depth 2 wtime", "'wtime'"},
             {"go nodes depth 2", "'nodes'"},
             {"go depth two", "'two'"},
             {"go wtime 1x btime 1000 depth 2", "'1x'"},
             {"go movetime", "'movetime'"},
             {"go depth 2 perft", "'perft'"},
             {"go searchmoves e2e5 d2d4 depth 2", "'e2e5'"},
             {"go mate - depth 2", "'-'"},
         }) {
        ask("position startpos");
        type(go);
        type("stop", at(100));
        const std::string output = run();
        EXPECT_EQ(linesOf(complaints(output)).size(), 1U) << go << "\n" << output;
        EXPECT_TRUE(has(complaints(output), told)) << go;
        EXPECT_NE(bestMove(output), "") << go;
    }
    EXPECT_EQ(complaints(askAt(Middle, "go wtime -50 btime 100.5 winc +0 depth 2")), "");
}

TEST_F(ModernUciTest, FindsMates) {
    // The key move threatens nothing: Black is in zugzwang.
    const std::string output = askAt(MateInTwo, "go mate 2");
    EXPECT_EQ(bestMove(output), "a1a6");
    EXPECT_TRUE(has(scored(output).back(), "score mate 2 ")) << output;
    EXPECT_EQ(complaints(output), "");
    // Without one, the search ends where it would have been found.
    const std::string none = ask("go mate 1");
    EXPECT_TRUE(has(complaints(none), "no mate in 1"));
    EXPECT_EQ(behind(scored(none).back(), "depth"), "2");
    EXPECT_EQ(bestMove(none).size(), 4U);
    EXPECT_EQ(bestMove(ask("go mate 1 depth 3")).size(), 4U);
    EXPECT_EQ(theSearcher.maxIteration, 3);
}

// --- A legal move -------------------------------------------------------------------------------

TEST_F(ModernUciTest, GivesTheSameMateAgain) {
    for (int i = 0; i < 3; ++i) {
        const std::string output = askAt(MateInOne, "go depth 4");
        EXPECT_EQ(bestMove(output), "g6g7");
        EXPECT_EQ(bestMove(ask("go depth 4")), "g6g7") << "without a new position";
        // A line ends with the game.
        EXPECT_TRUE(has(scored(output).back(), " score mate 1 "));
        EXPECT_TRUE(scored(output).back().ends_with(" pv g6g7"));
    }
}

TEST_F(ModernUciTest, AlwaysHasALegalMove) {
    constexpr char Knight[] = "8/8/3k4/8/8/3K4/4N3/8 w - - 0 1";
    constexpr char Fifty[] = "8/8/3k4/8/8/3K4/4R3/8 w - - 120 90";
    for (const char* fen : {Middle, Knight, Fifty, OneReply}) {
        for (const char* go : {"go depth 0", "go depth -3", "go depth 2", "go infinite"}) {
            ask("position fen " + std::string(fen));
            type(go);
            type("stop", at(100));
            const std::string output = run();
            const std::string best = bestMove(output);
            EXPECT_EQ(complaints(ask("position fen " + std::string(fen) + " moves " + best)), "")
                << output;
            ASSERT_FALSE(scored(output).empty()) << fen << " " << go;
            EXPECT_EQ(behind(scored(output).back(), "pv"), best) << output;
        }
    }
    ask("position startpos");
    outside->send("go infinite\nstop\n");
    EXPECT_NE(bestMove(run()), "0000");
    // The move in hand is used, and stays among those asked for.
    askAt(Middle, "go depth 5");
    EXPECT_EQ(bestMove(ask("go depth 0 searchmoves b2b3")), "b2b3");
}

TEST_F(ModernUciTest, HasNoMoveWhereThereIsNone) {
    for (int i = 0; i < 2; ++i) {
        const std::string mated = askAt(Mated, "go movetime 100");
        EXPECT_EQ(answerOf(mated), "0000");
        EXPECT_TRUE(has(mated, "info depth 0 score mate 0\n"));
        const std::string stalemate = askAt(Stalemate, "go depth 3");
        EXPECT_EQ(answerOf(stalemate), "0000");
        EXPECT_TRUE(has(stalemate, "info depth 0 score cp 0\n"));
    }
    EXPECT_EQ(bestMove(askAt(Middle, "go depth 3")).size(), 4U);
}

// --- Waiting ------------------------------------------------------------------------------------

TEST_F(ModernUciTest, HoldsTheAnswerBack) {
    // Each of these searches ends by itself; the clock only jumps while the program waits.
    for (const char* fen : {MateInOne, OneReply, Mated, Stalemate}) {
        for (const auto& [go, end] : {std::pair{"go infinite", "stop"},
                                      {"go ponder wtime 1000 btime 1000", "stop"},
                                      {"go ponder wtime 1000 btime 1000", "ponderhit"}}) {
            ask("position fen " + std::string(fen));
            type(std::string(go) + " depth 3");
            type("isready", at(outside->clock + 1000));
            type("position startpos", at(outside->clock + 2000));
            type(end, at(outside->clock + 3000));
            const std::string output = run();
            EXPECT_LT(output.find("readyok"), output.find("bestmove")) << fen << " " << output;
            EXPECT_LT(output.find("no effect"), output.find("bestmove")) << fen << " " << go;
            EXPECT_NE(answerOf(output), "");
            EXPECT_EQ(theSearcher.searchMode, SearchMode::Idle);
        }
    }
}

TEST_F(ModernUciTest, PondersOnlyIfItMay) {
    ask("setoption name Ponder value false");
    const std::string output = askAt(Middle, "go ponder depth 3");
    EXPECT_EQ(answerOf(output), bestMove(output));
    EXPECT_NE(answerOf(output), "");
    ask("setoption name Ponder value true");
    EXPECT_TRUE(has(answerOf(ask("go depth 4")), " ponder "));
}

TEST_F(ModernUciTest, BudgetsAPonderHitFromTheStartOfPondering) {
    // The budget of 60 s alone is over a second and less than five.
    for (const auto& [pondered, answersAtOnce] : {std::pair{100, false}, {5000, true}}) {
        ask("position fen " + std::string(Middle));
        outside->stepOfPoll = 50;
        type("go ponder wtime 60000 btime 60000");
        const std::uint64_t hit = outside->clock + static_cast<std::uint64_t>(pondered);
        type("ponderhit", at(hit));
        const std::string output = run();
        EXPECT_NE(bestMove(output), "");
        EXPECT_EQ(outside->clock < hit + 200, answersAtOnce) << outside->clock - hit;
        EXPECT_LT(outside->clock, hit + 5000);
        outside->stepOfPoll = 0;
    }
}

TEST_F(ModernUciTest, AnswersAtTheEndOfTheInput) {
    for (const char* go : {"go infinite", "go infinite depth 2", "go ponder depth 2"}) {
        begin("ModernInterface: true\n");
        ask("position fen " + std::string(Middle));
        type(go);
        outside->closeInput();
        EXPECT_NE(bestMove(run()), "") << go;
        EXPECT_EQ(program->exitCode, 0);
    }
    begin("ModernInterface: true\n");
    type("go infinite depth 1");
    type("quit");
    EXPECT_EQ(answerOf(run()), "");
    EXPECT_EQ(program->exitCode, 0);
}

// --- What the options do ------------------------------------------------------------------------

TEST_F(ModernUciTest, KeepsTheMoveOverheadInReserve) {
    struct Case {
        const char* go;
        const char* left;
    };
    ask("setoption name Move Overhead value 255");
    for (const auto& [go, left] : {
             Case{"go wtime 10000 btime 5000", "Left time: 974 "},
             {"go wtime 200 btime 5000", "Left time: 1 Thinking time: 1\n"},
             {"go wtime 0 btime 0", "Left time: 1 Thinking time: 1\n"},
             {"go movetime 1000", "Thinking time: 74\n"},
             {"go movetime 10", "Thinking time: 1\n"},
             {"go nodes 1000", "Left time: 0 Thinking time: 0\n"},
         }) {
        outside->stepOfPoll = 100;
        const std::string output = askAt(Middle, go);
        EXPECT_TRUE(has(output, left)) << go << "\n" << linesOf(output, "## ")[0];
    }
    // A clock counts beside other limits.
    EXPECT_NE(bestMove(ask("go movetime 500 depth 39")), "");
}

TEST_F(ModernUciTest, TellsSeveralLinesInOrder) {
    ask("setoption name MultiPV value 3");
    const std::string output = askAt(Middle, "go depth 4");
    std::vector<std::string> last = linesOf(output, "info depth 4");
    ASSERT_GE(last.size(), 3U) << output;
    last.erase(last.begin(), last.end() - 3);
    std::vector<int> scores;
    std::vector<std::string> moves;
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(behind(last[i], "multipv"), std::to_string(i + 1));
        scores.push_back(std::stoi(behind(last[i], "cp")));
        moves.push_back(behind(last[i], "pv"));
    }
    EXPECT_TRUE(std::is_sorted(scores.rbegin(), scores.rend()));
    EXPECT_EQ(moves[0], bestMove(output));
    EXPECT_NE(moves[0], moves[1]);
    EXPECT_NE(moves[1], moves[2]);
    // No more lines than moves
    EXPECT_FALSE(has(askAt(OneReply, "go depth 2"), "multipv 2"));
}

TEST_F(ModernUciTest, LimitsTheStrengthByNodes) {
    ask("setoption name UCI_LimitStrength value true");
    ask("setoption name UCI_Elo value " + std::to_string(LowestElo));
    const std::uint32_t limit = nodesOfElo(LowestElo);
    askAt(Middle, "go depth 20");
    EXPECT_EQ(theSearcher.nodeLimit, limit);
    ask("go nodes 100000000 depth 20");
    EXPECT_EQ(theSearcher.nodeLimit, limit);
    ask("go depth 20 nodes " + std::to_string(limit / 2));
    EXPECT_EQ(theSearcher.nodeLimit, limit / 2);
    type("go infinite depth 2");
    type("stop", at(1000));
    run();
    EXPECT_EQ(theSearcher.nodeLimit, 0U);
}

// --- Info lines ---------------------------------------------------------------------------------

TEST_F(ModernUciTest, PrintsWellFormedLines) {
    const std::string output = askAt(Middle, "go depth 6");
    const std::vector<std::string> lines = scored(output);
    EXPECT_EQ(behind(lines.front(), "depth"), "1");
    EXPECT_EQ(behind(lines.back(), "depth"), "6");
    for (const std::string& line : lines) {
        const std::size_t first = line.find("hashfull");
        EXPECT_NE(first, line.npos) << line;
        EXPECT_EQ(line.find("hashfull", first + 1), line.npos) << line;
        // The clock stands still: a centisecond at most has passed.
        EXPECT_EQ(std::stoul(behind(line, "nps")), 100 * std::stoul(behind(line, "nodes"))) << line;
        const std::string pv = behind(line, "pv", 1000);
        EXPECT_EQ(complaints(ask("position fen " + std::string(Middle) + " moves " + pv)), "");
        EXPECT_FALSE(line.ends_with(' '));
    }
    EXPECT_EQ(behind(lines.back(), "pv"), bestMove(output));
}

TEST_F(ModernUciTest, TellsTheScoreOfAMoveWithoutASearch) {
    const std::string single = askAt(OneReply, "go movetime 1000");
    EXPECT_EQ(bestMove(single), "a8b8");
    ASSERT_EQ(scored(single).size(), 1U);
    EXPECT_TRUE(has(scored(single)[0], "info depth 1 seldepth 1 score cp -")) << single;
    EXPECT_TRUE(scored(single)[0].ends_with(" pv a8b8"));

    ask("position startpos moves a2a3");
    std::string record(BookRecord::Bytes, '\1');
    for (unsigned i = 0; i < 8; ++i) record[i] = static_cast<char>(theBoard.hashKey >> (8 * i));
    std::ofstream("libro.bin", std::ios::binary) << record;
    ask("position startpos");
    const std::string book = ask("go movetime 1000");
    EXPECT_TRUE(theSearcher.bookMove);
    EXPECT_TRUE(has(book, "info string book move\n"));
    EXPECT_TRUE(scored(book).back().ends_with(" pv " + bestMove(book)));
}

// --- What remains -------------------------------------------------------------------------------

TEST_F(ModernUciTest, LeavesNothingToTheNextProtocol) {
    ask("setoption name PlayFRC value true\nsetoption name QueenValue value 500");
    ask("setoption name Ponder value false\nsetoption name MultiPV value 3");
    askAt(Middle, "go nodes 100");
    askAt(Middle, "go depth 1");
    ask("xboard");
    EXPECT_EQ(theSearcher.nodeLimit, 0U);
    EXPECT_EQ(theSearcher.maxIteration, NoFixedDepth);
    EXPECT_EQ(theSearcher.ponderMove, NoMove);
    EXPECT_TRUE(theSearcher.ponderEnabled);
    Settings fromFile;
    fromFile.modernInterface = true;
    EXPECT_EQ(settings, fromFile);
    EXPECT_EQ(modernSettings, ModernSettings{});
    EXPECT_EQ(pieceValue[WhiteQueen], Settings{}.QueenValue);
}

TEST_F(ModernUciTest, CountsTheNodesOfThePlainHandler) {
    // Searches that meet null moves, mates, single replies, fail-highs and entries of earlier
    // searches; some begin with the records that the search before has left.
    const char* const Script[] = {
        "position startpos",
        "go depth 6",
        "position startpos moves e2e4 e7e5",
        "go depth 6",
        "position startpos moves e2e4 e7e5 g1f3 b8c6",
        "go depth 6",
        "go depth 6",
        "position fen r3r1k1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
        "go depth 2",
        "go depth 6",
        "go nodes 30000",
        "setoption name Clear Hash",
        "go depth 6",
        "position fen k7/8/1K6/8/8/8/8/7R b - - 0 1",
        "go depth 5",
        "position fen kbK5/pp6/1P6/8/8/8/8/R7 w - - 0 1",
        "go depth 6",
        "setoption name Hash value 2",
        "position fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
        "go depth 8",
        "position fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1 moves b4b1",
        "go depth 8",
        "ucinewgame",
        "position fen r1bq1rk1/pp2ppbp/2np1np1/8/3NP3/2N1BP2/PPPQ2PP/R3KB1R w KQ - 0 9",
        "go depth 6",
        "go depth 6",
    };
    const auto play = [&](const std::string& file) {
        begin(file);
        std::vector<std::string> results;
        for (const char* line : Script) {
            const std::string answer = answerOf(ask(line));
            results.push_back(std::string(line) + ": " + answer + ", " +
                              std::to_string(searchStats.nodes) + " nodes");
        }
        return results;
    };
    EXPECT_EQ(play("ModernInterface: true\n"), play(""));
}

}  // namespace
}  // namespace brivok
