#include "shell/uci_handler.h"

#include <algorithm>

#include "board/board.h"
#include "board/coordinate.h"
#include "movegen/move_text.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/console.h"
#include "shell/base/report.h"
#include "shell/base/version.h"
#include "shell/base/words.h"
#include "shell/board_diagram.h"
#include "shell/go_words.h"
#include "shell/move_counts.h"
#include "shell/protocols.h"
#include "shell/uci_options.h"

namespace brivok {

namespace {

constexpr char EngineAuthor[] = "Osmund Kelvane";

/// Maximum length of a "position" line, far beyond any game.
constexpr std::size_t LongestPosition = 1U << 20U;

constexpr std::string_view InfiniteWord = "infinite";
constexpr std::string_view PonderWord = "ponder";

}  // namespace

UciHandler::UciHandler(Application& application) : UciHandler(application, Unannounced{}) {
    introduce();
    listOptions(app);
    Print(app, "uciok\n");
}

UciHandler::UciHandler(Application& application, Unannounced /*tag*/)
    : ProtocolHandler(application) {
    allocateTables();
    LogOnly(app, "UCI support started\n");
    logConnection(app);
    theBoard.NewGame();
}

void UciHandler::introduce() {
    Print(app, "id name %s\n", EngineName);
    Print(app, "id author %s\n", EngineAuthor);
}

UciHandler::~UciHandler() { LogOnly(app, "UCI support closed\n"); }

CommandTable<UciHandler, UciHandler::Words> UciHandler::table(bool searching) {
    using Entry = Command<UciHandler, Words>;
    static constexpr Entry WhileSearching[] = {
        {"stop", [](UciHandler& self, const Words&) { self.stop(); }},
        {"ponderhit", [](UciHandler& self, const Words&) { self.ponderHit(); }},
        {"isready", [](UciHandler& self, const Words&) { self.confirmReady(); }},
        {"quit", [](UciHandler&, const Words&) { ExitProgram(0); }},
    };
    static constexpr Entry WhileIdle[] = {
        {"xboard",
         [](UciHandler& self, const Words&) {
             self.done = true;
             self.app.requestedProtocol = Protocol::WinBoard;
         }},
        {"ucinewgame", [](UciHandler& self, const Words&) { self.newGame(); }},
        {"genmoves", [](UciHandler&, const Words&) { listLegalMoves(theBoard); }},
        {"setoption", [](UciHandler&, const Words& words) { setOption(words); }},
        {"position", [](UciHandler& self, const Words& words) { self.setPosition(words); }},
        {"go", [](UciHandler& self, const Words& words) { self.go(words); }},
        {"isready", [](UciHandler& self, const Words&) { self.confirmReady(); }},
        {"quit", [](UciHandler&, const Words&) { ExitProgram(0); }},
    };
    if (searching) return WhileSearching;
    return WhileIdle;
}

std::vector<std::string_view> UciHandler::commands(bool searching) {
    return wordsOf(table(searching));
}

std::vector<std::string_view> UciHandler::goWords() {
    std::vector<std::string_view> words = wordsOf(GoWords::keywords());
    words.insert(words.end(), {InfiniteWord, PonderWord});
    return words;
}

void UciHandler::Run() { RunReadLoop(*this); }

void UciHandler::ProcessCommand(std::string_view line) {
    LogOnly(app, "UCI Received: %s\n", std::string(line).c_str());
    const bool searching = theSearcher.searchMode != SearchMode::Idle;
    if (!searching && collectLongPosition(line)) return;

    const Words words = SplitWords(line);
    longPosition.clear();
    if (!words.empty()) (void)execute(table(searching), words[0], *this, words);
}

bool UciHandler::collectLongPosition(std::string_view& line) {
    constexpr std::string_view Command = "position ";
    const bool cut = line.size() == MaxLineLength && line.back() != '\n';
    if (longPosition.empty()) {
        const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
        if (!cut || !line.substr(start).starts_with(Command)) return false;
    }
    if (longPosition.size() < LongestPosition) longPosition += line;
    // The line may have been cut between a carriage return and its newline.
    if (!cut) std::erase(longPosition, '\r');
    line = longPosition;
    return cut;
}

void UciHandler::confirmReady() { Print(app, "readyok\n"); }

void UciHandler::stop() {
    theSearcher.searchMode = SearchMode::Idle;
    theSearcher.stopSearch = true;
    LogOnly(app, "Search stopped\n");
}

void UciHandler::ponderHit() {
    if (theSearcher.searchMode != SearchMode::Pondering) return;
    // Not takePonderHit(): the clocks came with "go", and the budget is set already.
    theSearcher.searchMode = SearchMode::Thinking;
    LogOnly(app, "Search mode switched to normal\n");
}

void UciHandler::newGame() {
    theBoard.NewGame();
    LogOnly(app, "New game ready\n");
}

void UciHandler::setPosition(const Words& words) {
    if (words.size() < 2) return;
    const auto moves = std::find(words.begin(), words.end(), "moves");
    if (words[1] == "startpos") {
        theBoard.NewGame();
    } else if (words[1] == "fen") {
        std::string fen;
        for (auto word = words.begin() + 2; word < moves; ++word) fen += *word + " ";
        theBoard.setPositionFromFen(fen);
        PrintBoard(app, theBoard);
    }
    if (moves == words.end()) return;
    for (auto word = moves + 1; word != words.end(); ++word) {
        const Move move = parseMove(theBoard, *word);
        if (move != NoMove) theBoard.playGameMove(move);
    }
    PrintBoard(app, theBoard);
}

void UciHandler::go(const Words& words) {
    Searcher& searcher = theSearcher;
    SearchRequest request{.clock = TimeControl{}};
    GoWords limits(request, theBoard.sideToMove);
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == InfiniteWord) {
            request.mode = SearchMode::Analysing;
            break;
        }
        if (words[i] == PonderWord) {
            request.mode = searcher.ponderEnabled ? SearchMode::Pondering : SearchMode::Thinking;
            continue;
        }
        // A keyword without a value is ignored; an empty last word is not a value.
        const bool hasValue = i + 1 < words.size() && !words[i + 1].empty();
        if (hasValue && limits.take(words[i], words[i + 1])) ++i;
    }
    limits.finish();

    const Move best = searcher.think(request, listener);
    searcher.searchMode = SearchMode::Idle;

    std::string answer = "\nbestmove " + moveToCoordinate(best) + " ";
    if (searcher.ponderEnabled && searcher.ponderMove != NoMove) {
        answer += "ponder " + moveToCoordinate(searcher.ponderMove);
    }
    Print(app, "%s\n", answer.c_str());
}

}  // namespace brivok
