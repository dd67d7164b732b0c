#include "shell/winboard_handler.h"

#include <algorithm>
#include <cstdint>

#include "board/board.h"
#include "board/coordinate.h"
#include "egtb/tablebase_probe.h"
#include "eval/evaluate.h"
#include "hash/eval_hash.h"
#include "hash/transposition_table.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "movegen/perft.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/console.h"
#include "shell/base/report.h"
#include "shell/base/settings.h"
#include "shell/base/version.h"
#include "shell/base/words.h"
#include "shell/board_diagram.h"
#include "shell/configuration.h"
#include "shell/move_counts.h"
#include "shell/protocols.h"

namespace brivok {

namespace {

/// Longest move text that is kept while pondering.
constexpr std::size_t LongestMoveText = 255;

/// Limits for numbers in commands, so that the resulting clocks do not overflow.
constexpr std::int64_t MostMinutes = 300'000;
constexpr std::int64_t MostSeconds = 10'000'000;
constexpr std::int64_t MostMoves = 1'000'000;
constexpr std::int64_t MostCentiseconds = 0x7FFFFFFF;

std::uint32_t numberUpTo(const std::string& word, std::int64_t most) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(parseInteger(word), 0, most));
}

/// The interface sends clocks in centiseconds.
void setClock(std::uint32_t& clock, const std::string* word) {
    if (word != nullptr) clock = numberUpTo(*word, MostCentiseconds);
}

/// Prints the tablebase value of the position after each legal move, for the side to move there, as
/// at the root of a search; 0 if no table has it.
void reportTablebases(Application& app, Board& board) {
    constexpr int RootPly = 1;
    forEachLegalMove(board, [&](Move move) {
        std::int32_t score = 0;
        (void)TablebaseProbe(board, RootPly, score);
        Print(app, "%s -> %d\n", moveToCoordinate(move).c_str(), score);
    });
}

}  // namespace

const std::string* WinBoardHandler::Line::word(std::size_t index) const {
    return index < words.size() && !words[index].empty() ? &words[index] : nullptr;
}

std::string WinBoardHandler::Line::rest(int skipped) const {
    constexpr std::string_view Blanks = " \n";
    const std::string_view all = text;
    std::size_t at = std::min(all.find_first_not_of(Blanks), all.size());
    for (; skipped > 0; --skipped) {
        at = std::min(all.find_first_of(Blanks, at), all.size());
        at = std::min(all.find_first_not_of(Blanks, at), all.size());
    }
    return std::string(all.substr(at, all.find_last_not_of(Blanks) + 1 - at));
}

WinBoardHandler::WinBoardHandler(Application& application) : ProtocolHandler(application) {
    Print(app, "feature done=0\n");
    ReadConfiguration();
    app.logger.OpenLog();
    allocateTables();
    LogOnly(app, "WB support started\n");
    logConnection(app);
    theBoard.NewGame();
}

WinBoardHandler::~WinBoardHandler() { LogOnly(app, "WB support closed\n"); }

const WinBoardHandler::Command WinBoardHandler::AnalysisCommands[] = {
    {"exit", [](WinBoardHandler&, const Line&) { theSearcher.stopSearch = true; }},
    {"quit", [](WinBoardHandler& self, const Line&) { self.quit(); }},
    {".", [](WinBoardHandler& self,
             const Line&) { printAnalysisStatus(self.app, theSearcher.progress()); }},
    {"ping", [](WinBoardHandler& self, const Line& line) { self.ping(line); }},
};

const WinBoardHandler::Command WinBoardHandler::PonderCommands[] = {
    {"quit", [](WinBoardHandler& self, const Line&) { self.quit(); }},
    {"time",
     [](WinBoardHandler&, const Line& line) { setClock(timeControl.ownTime, line.word(1)); }},
    {"force", [](WinBoardHandler& self, const Line&) { self.forceAndStop(); }},
    {"otim",
     [](WinBoardHandler&, const Line& line) { setClock(timeControl.oppTime, line.word(1)); }},
    {"ping", [](WinBoardHandler& self, const Line& line) { self.ping(line); }},
    {"usermove", [](WinBoardHandler& self, const Line& line) { self.takePonderedMove(line); }},
};

const WinBoardHandler::Command WinBoardHandler::ThinkCommands[] = {
    {"?", [](WinBoardHandler&, const Line&) { theSearcher.stopSearch = true; }},
    {"quit", [](WinBoardHandler& self, const Line&) { self.quit(); }},
    {".", [](WinBoardHandler& self,
             const Line&) { printAnalysisStatus(self.app, theSearcher.progress()); }},
    {"force", [](WinBoardHandler& self, const Line&) { self.forceAndStop(); }},
    {"ping", [](WinBoardHandler& self, const Line& line) { self.ping(line); }},
};

const WinBoardHandler::Command WinBoardHandler::IdleCommands[] = {
    {"uci",
     [](WinBoardHandler& self, const Line&) {
         self.done = true;
         self.app.requestedProtocol = Protocol::Uci;
     }},
    {"clearh",
     [](WinBoardHandler&, const Line&) {
         transpositionTable.clear();
         evalHashTable.Clear();
     }},
    {"eval",
     [](WinBoardHandler& self, const Line&) {
         Print(self.app, "Eval: %d\n", Evaluate(theBoard, -MateScore, MateScore));
     }},
    {"tbrep", [](WinBoardHandler& self, const Line&) { reportTablebases(self.app, theBoard); }},
    {"protover", [](WinBoardHandler& self, const Line& line) { self.protover(line); }},
    {"time",
     [](WinBoardHandler&, const Line& line) { setClock(timeControl.ownTime, line.word(1)); }},
    {"otim",
     [](WinBoardHandler&, const Line& line) { setClock(timeControl.oppTime, line.word(1)); }},
    {"accepted", [](WinBoardHandler&, const Line&) {}},
    {"rejected", [](WinBoardHandler&, const Line&) {}},
    {"variant", [](WinBoardHandler& self, const Line& line) { self.chooseVariant(line); }},
    {"random", [](WinBoardHandler&, const Line&) {}},
    {"level", [](WinBoardHandler& self, const Line& line) { self.level(line); }},
    {"st", [](WinBoardHandler& self, const Line& line) { self.fixedTime(line); }},
    {"sd", [](WinBoardHandler& self, const Line& line) { self.fixedDepth(line); }},
    {"setboard", [](WinBoardHandler& self, const Line& line) { self.setBoard(line); }},
    {"hard", [](WinBoardHandler&, const Line&) { theSearcher.ponderEnabled = true; }},
    {"easy", [](WinBoardHandler&, const Line&) { theSearcher.ponderEnabled = false; }},
    {"post", [](WinBoardHandler&, const Line&) { theSearcher.postThinking = true; }},
    {"nopost", [](WinBoardHandler&, const Line&) { theSearcher.postThinking = false; }},
    {"undo", [](WinBoardHandler& self, const Line&) { self.takeBack(1); }},
    {"remove", [](WinBoardHandler& self, const Line&) { self.takeBack(2); }},
    {"white",
     [](WinBoardHandler& self, const Line&) {
         self.engineSide = Black;
         theBoard.giveMoveTo(White);
     }},
    {"black",
     [](WinBoardHandler& self, const Line&) {
         self.engineSide = White;
         theBoard.giveMoveTo(Black);
     }},
    {"board", [](WinBoardHandler& self, const Line&) { PrintBoard(self.app, theBoard); }},
    {"go",
     [](WinBoardHandler& self, const Line&) {
         self.forceMode = false;
         self.engineSide = theBoard.sideToMove;
     }},
    {"analyze", [](WinBoardHandler& self, const Line&) { self.analyze(); }},
    {"result", [](WinBoardHandler& self, const Line&) { self.gameOver = true; }},
    {"new", [](WinBoardHandler& self, const Line&) { self.newGame(); }},
    {"quit", [](WinBoardHandler& self, const Line&) { self.quit(); }},
    {"force", [](WinBoardHandler& self, const Line&) { self.force(); }},
    {"ping", [](WinBoardHandler& self, const Line& line) { self.ping(line); }},
    {"usermove", [](WinBoardHandler& self, const Line& line) { self.playUserMove(line); }},
    {"perft", [](WinBoardHandler& self, const Line& line) { self.countMoves(line); }},
};

CommandTable<WinBoardHandler, WinBoardHandler::Line> WinBoardHandler::table(SearchMode mode) {
    switch (mode) {
        case SearchMode::Analysing: return AnalysisCommands;
        case SearchMode::Pondering: return PonderCommands;
        case SearchMode::Thinking: return ThinkCommands;
        case SearchMode::Idle: break;
    }
    return IdleCommands;
}

std::vector<std::string_view> WinBoardHandler::commands(SearchMode mode) {
    return wordsOf(table(mode));
}

void WinBoardHandler::ProcessCommand(std::string_view text) {
    const Line line{SplitWords(text), std::string(text)};
    LogOnly(app, "WB Received: %s\n", line.text.c_str());
    if (!line.words.empty()) obey(line);
}

void WinBoardHandler::obey(const Line& line) {
    const SearchMode mode = theSearcher.searchMode;
    const std::string& word = line.words[0];
    if (execute(table(mode), word, *this, line)) return;
    switch (mode) {
        case SearchMode::Analysing: break;
        case SearchMode::Pondering:
            if (IsMoveText(word)) takePonderedMove(line);
            break;
        case SearchMode::Thinking: unknown(line); break;
        case SearchMode::Idle:
            if (IsMoveText(word)) {
                playUserMove(line);
            } else {
                unknown(line);
            }
            break;
    }
}

void WinBoardHandler::quit() { ExitProgram(0); }

void WinBoardHandler::ping(const Line& line) {
    if (const std::string* number = line.word(1)) Print(app, "pong %s\n", number->c_str());
}

void WinBoardHandler::force() { forceMode = true; }

void WinBoardHandler::forceAndStop() {
    forceMode = true;
    theSearcher.stopSearch = true;
}

void WinBoardHandler::protover(const Line& line) {
    const std::string* version = line.word(1);
    if (version == nullptr) return;
    protocolVersion = numberUpTo(*version, MostMoves);
    if (protocolVersion != 2) return;
    Print(app,
          "feature ping=1 setboard=1 usermove=1 draw=0 ics=1 name=1 sigint=0 sigterm=0 "
          "myname=\"%s\"",
          EngineName);
    Print(app, " variants=\"normal,fischerandom,nocastle\"");
    Print(app, " done=1\n");
}

void WinBoardHandler::chooseVariant(const Line& line) {
    const std::string* name = line.word(1);
    if (name == nullptr) return;
    if (*name == "nocastle") settings.variant = Variant::NoCastle;
    if (*name == "fischerandom") settings.variant = Variant::Fischerandom;
}

void WinBoardHandler::level(const Line& line) {
    const std::string* moves = line.word(1);
    const std::string* base = line.word(2);  // minutes; anything after a colon is ignored
    const std::string* increment = line.word(3);
    if (moves == nullptr || base == nullptr || increment == nullptr) return;
    theSearcher.nodeLimit = 0;
    theSearcher.maxIteration = NoFixedDepth;
    const std::uint32_t minutes = numberUpTo(*base, MostMinutes);
    const std::uint32_t seconds = numberUpTo(*increment, MostSeconds);
    if (const std::uint32_t session = numberUpTo(*moves, MostMoves); session != 0) {
        timeControl.setConventional(session, minutes);
    } else if (seconds != 0) {
        timeControl.setIncrement(minutes, seconds);
    } else {
        timeControl.setSuddenDeath(minutes);
    }
}

void WinBoardHandler::fixedTime(const Line& line) {
    const std::string* seconds = line.word(1);
    if (seconds == nullptr) return;
    theSearcher.nodeLimit = 0;
    theSearcher.maxIteration = NoFixedDepth;
    timeControl.setFixedTime(numberUpTo(*seconds, MostSeconds) * 100);
}

void WinBoardHandler::fixedDepth(const Line& line) {
    const std::string* depth = line.word(1);
    if (depth == nullptr) return;
    theSearcher.nodeLimit = 0;
    theSearcher.maxIteration = static_cast<int>(
        std::clamp<std::int64_t>(parseInteger(*depth), -DeepestIteration, DeepestIteration));
}

void WinBoardHandler::setBoard(const Line& line) {
    std::string fen;
    for (std::size_t i = 1; i < line.words.size(); ++i) fen += line.words[i] + " ";
    theBoard.setPositionFromFen(fen);
    forceMode = true;
}

void WinBoardHandler::analyze() {
    forceMode = false;
    theSearcher.maxIteration = NoFixedDepth;
    theSearcher.searchMode = SearchMode::Analysing;
}

void WinBoardHandler::newGame() {
    gameOver = false;
    forceMode = false;
    resignCounter = 0;
    theSearcher.maxIteration = NoFixedDepth;
    engineSide = Black;
    theBoard.NewGame();
}

void WinBoardHandler::takeBack(int moves) {
    for (; moves > 0; --moves) theBoard.unmakeMove();
}

void WinBoardHandler::countMoves(const Line& line) {
    const std::string* depth = line.word(1);
    if (depth != nullptr) perft(app, theBoard, numberUpTo(*depth, MaxPerftDepth));
}

void WinBoardHandler::unknown(const Line& line) {
    Print(app, "Error (Unknown command): %s\n", line.text.c_str());
}

/// The move in "usermove e2e4" or in a bare move: the second word if there is one.
const std::string& WinBoardHandler::Line::moveText() const {
    const std::string* second = word(1);
    return second != nullptr ? *second : words[0];
}

void WinBoardHandler::playUserMove(const Line& line) {
    const std::string& text = line.moveText();
    const Move move = parseMove(theBoard, text);
    if (isLegalMove(theBoard, move)) {
        theBoard.playGameMove(move);
    } else {
        Print(app, "Illegal move: %s\n", text.c_str());
    }
}

void WinBoardHandler::takePonderedMove(const Line& line) {
    const std::string& text = line.moveText();
    strMovDuranteBusqueda = text.substr(0, LongestMoveText);
    if (strMovDuranteBusqueda != moveToCoordinate(theSearcher.ponderMove)) {
        theSearcher.stopSearch = true;
        return;
    }
    takePonderHit();
    strMovDuranteBusqueda.clear();
}

void WinBoardHandler::takePonderHit() {
    LogOnly(app, "Search mode switched to normal\n");
    theSearcher.takePonderHit();
    LogOnly(app, "Left time: %d Thinking time: %d\n", timeControl.ownTime, timeControl.allocated);
}

}  // namespace brivok
