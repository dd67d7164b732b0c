#include "shell/modern/modern_winboard_handler.h"

#include <algorithm>

#include "board/coordinate.h"
#include "movegen/san.h"
#include "search/searcher.h"
#include "shell/base/console.h"
#include "shell/base/version.h"
#include "shell/base/words.h"
#include "shell/modern/interface_moves.h"
#include "shell/modern/modern_options.h"
#include "shell/modern/suggestions.h"
#include "shell/modern/time_words.h"

namespace brivok {

namespace {

constexpr std::uint32_t MostMegabytes = 1U << 20U;

template <class Handler, class Line>
bool knows(CommandTable<Handler, Line> table, std::string_view word) {
    return std::ranges::any_of(table, [&](const auto& command) { return command.word == word; });
}

/// Whether a word may be meant as a move, by its characters alone.
bool looksLikeMove(std::string_view word) {
    constexpr std::string_view First = "KQRBNOabcdefgh0";
    constexpr std::string_view Rest = "KQRBNOkqrbnabcdefgh012345678x:-=+#!?()";
    const bool castles = word.starts_with("O-O") || word.starts_with("0-0");
    return !word.empty() && First.find(word[0]) != std::string_view::npos &&
           word.find_first_not_of(Rest) == std::string_view::npos &&
           (castles || word.find_first_of("12345678") != std::string_view::npos);
}

}  // namespace

ModernWinBoardHandler::ModernWinBoardHandler(Application& application)
    : WinBoardHandler(application) {
    theSearcher.ponderMove = NoMove;
}

// --- Tables ---------------------------------------------------------------------------------

/// The same in every state.
const ModernWinBoardHandler::Further ModernWinBoardHandler::AtOnceCommands[] = {
    {"accepted", [](Self& self, const Line& line) { self.noteAnswer(line); }},
    {"rejected", [](Self& self, const Line& line) { self.noteAnswer(line); }},
    {"post", [](Self&, const Line&) { theSearcher.postThinking = true; }},
    {"nopost", [](Self&, const Line&) { theSearcher.postThinking = false; }},
    {"hard", [](Self&, const Line&) { theSearcher.ponderEnabled = true; }},
    {"easy", [](Self&, const Line&) { theSearcher.ponderEnabled = false; }},
    {"time", [](Self& self, const Line& line) { self.setOwnClock(line); }},
    {"otim", [](Self& self, const Line& line) { (void)self.setClock(timeControl.oppTime, line); }},
    {".", [](Self& self, const Line&) { self.reportProgress(); }},
    {"?",
     [](Self&, const Line&) {
         if (theSearcher.searchMode == SearchMode::Thinking) theSearcher.stopSearch = true;
     }},
    {"exit", [](Self& self, const Line&) { self.endAnalysis(); }},
    {"name", ignore},
    {"rating", ignore},
    {"computer", ignore},
    {"ics", ignore},
    {"draw", ignore},
    {"random", ignore},
    {"pause", ignore},
    {"resume", ignore},
    {"xboard", ignore},
};

const ModernWinBoardHandler::Further ModernWinBoardHandler::FurtherThinkCommands[] = {
    {"force", giveUp},
    {"new", giveUp},
    {"setboard", giveUp},
    {"undo", giveUp},
    {"remove", giveUp},
    {"result", giveUp},
    {"variant", giveUp},
    {"analyze", giveUp},
    {"white", giveUp},
    {"black", giveUp},
    {"playother", giveUp},
    {"level", keep},
    {"st", keep},
    {"sd", keep},
    {"memory", keep},
    {"option", keep},
    {"egtpath", keep},
    {"bk", keep},
    // A "pong" says that all is done that came before, the move included.
    {"ping", keep},
    {"go", ignore},
    {"usermove", refuseTurn},
    {"hint", [](Self& self, const Line&) { self.giveHint(self.shown.bestMove()); }},
};

const ModernWinBoardHandler::Further ModernWinBoardHandler::FurtherPonderCommands[] = {
    {"usermove",
     [](Self& self, const Line& line) { self.takeMoveWhilePondering(line, line.moveText()); }},
    {"easy",
     [](Self&, const Line&) {
         theSearcher.ponderEnabled = false;
         theSearcher.stopSearch = true;
     }},
    {"undo", interrupt},
    {"remove", interrupt},
    {"new", interrupt},
    {"setboard", interrupt},
    {"result", interrupt},
    {"level", interrupt},
    {"st", interrupt},
    {"sd", interrupt},
    {"variant", interrupt},
    {"analyze", interrupt},
    {"go", interrupt},
    {"playother", interrupt},
    {"white", interrupt},
    {"black", interrupt},
    {"memory", interrupt},
    {"option", interrupt},
    {"egtpath", interrupt},
    {"hint",
     [](Self& self, const Line&) {
         self.giveHint(moveToSan(*self.beforePondering, theSearcher.ponderMove));
     }},
    {"bk", [](Self& self, const Line&) { self.giveBookPage(*self.beforePondering); }},
};

const ModernWinBoardHandler::Further ModernWinBoardHandler::FurtherIdleCommands[] = {
    {"protover", [](Self& self, const Line& line) { self.announceFeatures(line); }},
    {"option", [](Self& self, const Line& line) { self.setOption(line); }},
    {"memory", [](Self& self, const Line& line) { self.allowMemory(line); }},
    {"egtpath", [](Self& self, const Line& line) { self.findTables(line); }},
    {"level", [](Self& self, const Line& line) { self.setLevel(line); }},
    {"st", [](Self& self, const Line& line) { self.setTimePerMove(line); }},
    {"sd", [](Self& self, const Line& line) { self.setDepth(line); }},
    {"new", [](Self& self, const Line&) { self.startNewGame(); }},
    {"variant", [](Self& self, const Line& line) { self.startVariant(line); }},
    {"setboard", [](Self& self, const Line& line) { self.setUpBoard(line); }},
    {"undo", [](Self& self, const Line& line) { self.takeBackMoves(line, 1); }},
    {"remove", [](Self& self, const Line& line) { self.takeBackMoves(line, 2); }},
    {"usermove", [](Self& self, const Line& line) { self.playMove(line.moveText()); }},
    {"white", [](Self& self, const Line& line) { self.giveMoveTo(line, White); }},
    {"black", [](Self& self, const Line& line) { self.giveMoveTo(line, Black); }},
    {"go", [](Self& self, const Line&) { self.play(theBoard.sideToMove); }},
    {"playother", [](Self& self, const Line&) { self.play(opposite(theBoard.sideToMove)); }},
    {"analyze", [](Self& self, const Line&) { self.startAnalysis(); }},
    {"hint", [](Self& self, const Line&) { self.giveHint(suggestMove()); }},
    {"bk", [](Self& self, const Line&) { self.giveBookPage(theBoard); }},
};

CommandTable<ModernWinBoardHandler, ModernWinBoardHandler::Line>
ModernWinBoardHandler::furtherTable(SearchMode mode) {
    switch (mode) {
        case SearchMode::Idle: return FurtherIdleCommands;
        case SearchMode::Pondering: return FurtherPonderCommands;
        case SearchMode::Thinking: return FurtherThinkCommands;
        case SearchMode::Analysing: break;
    }
    return {};
}

std::vector<std::string_view> ModernWinBoardHandler::furtherCommands(SearchMode mode) {
    std::vector<std::string_view> words = wordsOf(furtherTable(mode));
    const auto always = wordsOf(CommandTable<Self, Line>(AtOnceCommands));
    words.insert(words.end(), always.begin(), always.end());
    return words;
}

void ModernWinBoardHandler::obey(const Line& line) {
    const SearchMode mode = theSearcher.searchMode;
    const std::string& word = line.words[0];
    if (execute(furtherTable(mode), word, *this, line)) return;
    if (execute(CommandTable<Self, Line>(AtOnceCommands), word, *this, line)) return;
    WinBoardHandler& plain = *this;
    if (!execute(table(mode), word, plain, line)) obeyRest(mode, line);
}

/// A line whose first word is in no table of the state may be a move, or a command that waits until
/// an analysis is interrupted.
void ModernWinBoardHandler::obeyRest(SearchMode mode, const Line& line) {
    const std::string& word = line.words[0];
    const bool isMove = looksLikeMove(word);
    if (mode == SearchMode::Analysing) {
        const bool known = isMove || knows(furtherTable(SearchMode::Idle), word) ||
                           knows(table(SearchMode::Idle), word);
        return known ? interrupt(*this, line) : unknown(line);
    }
    if (!isMove) return unknown(line);
    switch (mode) {
        case SearchMode::Idle: return playMove(word);
        case SearchMode::Pondering: return takeMoveWhilePondering(line, word);
        default: return refuseTurn(*this, line);
    }
}

void ModernWinBoardHandler::refuse(const Line& line, const std::string& fault) {
    Print(app, "Error (%s): %s\n", fault.c_str(), line.rest(0).c_str());
}

void ModernWinBoardHandler::refuseMove(const std::string& text) {
    Print(app, "Illegal move: %s\n", text.c_str());
}

// --- During a search ------------------------------------------------------------------------

void ModernWinBoardHandler::ignore(Self& /*self*/, const Line& /*line*/) {}

void ModernWinBoardHandler::keep(Self& self, const Line& line) { self.kept.push_back(line); }

void ModernWinBoardHandler::interrupt(Self& self, const Line& line) {
    keep(self, line);
    theSearcher.stopSearch = true;
}

void ModernWinBoardHandler::giveUp(Self& self, const Line& line) {
    interrupt(self, line);
    self.givenUp = true;
}

void ModernWinBoardHandler::refuseTurn(Self& self, const Line& line) {
    self.refuse(line, "it is the engine's turn");
}

/// The expected move turns pondering into thinking; any other legal move ends it.
void ModernWinBoardHandler::takeMoveWhilePondering(const Line& line, const std::string& text) {
    const Move move = readMove(*beforePondering, text);
    if (move == NoMove) {
        refuseMove(text);
    } else if (move == theSearcher.ponderMove) {
        takePonderHit();
    } else {
        interrupt(*this, line);
    }
}

// --- The interface's wishes -----------------------------------------------------------------

void ModernWinBoardHandler::announceFeatures(const Line& line) {
    const std::string* version = line.word(1);
    if (version == nullptr || parseInteger(*version) < 2) return;
    Print(app,
          "feature ping=1 setboard=1 usermove=1 playother=1 analyze=1 draw=0 colors=0 ics=0 "
          "name=0 reuse=1 sigint=0 sigterm=0 debug=1 memory=1 egt=\"nalimov\"\n");
    Print(app, "feature myname=\"%s\" variants=\"normal,fischerandom,nocastle\"\n", EngineName);
    if (const std::string options = optionFeatures(); !options.empty()) {
        Print(app, "feature%s\n", options.c_str());
    }
    Print(app, "feature done=1\n");
}

/// "accepted FEATURE" or "rejected FEATURE".
void ModernWinBoardHandler::noteAnswer(const Line& line) {
    const std::string* feature = line.word(1);
    if (feature == nullptr) return;
    rejected.erase(*feature);
    if (line.words[0] == "rejected") rejected.insert(*feature);
    shown.showsNotes = !rejected.contains("debug");
}

/// "option NAME=VALUE", or "option NAME" to press a button.
void ModernWinBoardHandler::setOption(const Line& line) {
    const std::string text = line.rest(1);
    const std::size_t sign = std::min(text.find('='), text.size());
    const std::string value = text.substr(std::min(sign + 1, text.size()));
    const std::string fault = setModernOption(text.substr(0, sign), value);
    if (!fault.empty()) refuse(line, fault);
}

void ModernWinBoardHandler::allowMemory(const Line& line) {
    const auto megabytes = readNumber(line.rest(1), MostMegabytes);
    if (!megabytes || *megabytes == 0) return refuse(line, "not a number of megabytes");
    setMemory(*megabytes);
}

/// "egtpath nalimov FOLDERS"
void ModernWinBoardHandler::findTables(const Line& line) {
    const std::string* kind = line.word(1);
    if (kind == nullptr || *kind != "nalimov") return refuse(line, "unknown kind of tables");
    const std::string fault = setModernOption("NalimovPath", line.rest(2));
    if (!fault.empty()) refuse(line, fault);
}

void ModernWinBoardHandler::reportProgress() {
    if (!analysing && theSearcher.searchMode != SearchMode::Thinking) return;
    printAnalysisStatus(app, theSearcher.progress());
}

void ModernWinBoardHandler::giveHint(const std::string& move) {
    if (!move.empty()) Print(app, "Hint: %s\n", move.c_str());
}

void ModernWinBoardHandler::giveBookPage(Board& board) {
    Print(app, "%s", bookPage(board).c_str());
}

}  // namespace brivok
