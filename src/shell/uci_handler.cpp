#include "shell/uci_handler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "board/board.h"
#include "board/coordinate.h"
#include "movegen/move_text.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/console.h"
#include "shell/base/words.h"
#include "shell/board_diagram.h"
#include "shell/move_counts.h"
#include "shell/protocols.h"
#include "shell/uci_options.h"

namespace brivok {

namespace {

constexpr char EngineAuthor[] = "Osmund Kelvane";

/// A "position" line grows no longer than this, far beyond any game.
constexpr std::size_t LongestPosition = 1U << 20U;

/// Longest clock that a "go" takes, in centiseconds: small enough for the sums made of clocks.
constexpr std::uint32_t LongestTime = 0x7FFFFFFF;

/// Milliseconds, as a floating-point number, in centiseconds. A fallen flag reads as no time.
std::uint32_t timeValue(const std::string& text) {
    const double centis = std::strtod(text.c_str(), nullptr) * 0.1;
    if (!(centis > 0)) return 0;
    return centis >= LongestTime ? LongestTime : static_cast<std::uint32_t>(centis);
}

std::uint32_t countValue(const std::string& text) {
    const std::int64_t value = parseInteger(text);
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, UINT32_MAX));
}

int depthValue(const std::string& text) {
    return static_cast<int>(std::clamp(parseInteger(text), -DeepestIteration, DeepestIteration));
}

/// The request of a search as the words of "go" give it. Clocks are put down by the side to move.
class GoWords {
public:
    GoWords(SearchRequest& toFill, Side side) : request(toFill), us(side) {}

    /// Takes a keyword with its value; false for a word that has none.
    [[nodiscard]] bool take(const std::string& word, const std::string& value) {
        if (word == "wtime") {
            setClock(us == White ? clock().ownTime : clock().oppTime, value);
        } else if (word == "btime") {
            setClock(us == Black ? clock().ownTime : clock().oppTime, value);
        } else if (word == "winc") {
            (us == White ? clock().ownIncrement : clock().oppIncrement) = timeValue(value);
        } else if (word == "binc") {
            (us == Black ? clock().ownIncrement : clock().oppIncrement) = timeValue(value);
        } else if (word == "movestogo") {
            movesToGo = std::min(countValue(value), LongestTime);
        } else if (word == "depth") {
            request.maxIteration = depthValue(value);
        } else if (word == "nodes") {
            request.nodeLimit = countValue(value);
        } else if (word == "movetime") {
            clock().setFixedTime(timeValue(value));
        } else {
            return false;
        }
        return true;
    }

    /// A number of moves to go makes the clock a conventional control.
    void finish() {
        if (movesToGo == 0 || clock().kind == ClockKind::FixedTime) return;
        clock().kind = ClockKind::Conventional;
        clock().movesPerSession = clock().movesLeft = movesToGo;
    }

private:
    TimeControl& clock() { return *request.clock; }

    void setClock(std::uint32_t& time, const std::string& value) {
        time = timeValue(value);
        clock().clockGiven = true;
    }

    SearchRequest& request;
    Side us;
    std::uint32_t movesToGo = 0;
};

}  // namespace

UciHandler::UciHandler(Application& application) : ProtocolHandler(application) {
    allocateTables();
    LogOnly(app, "UCI support started\n");
    logConnection(app);
    Print(app, "id name %s\n", EngineName);
    Print(app, "id author %s\n", EngineAuthor);
    listOptions(app);
    Print(app, "uciok\n");
    theBoard.NewGame();
}

UciHandler::~UciHandler() { LogOnly(app, "UCI support closed\n"); }

void UciHandler::Run() { RunReadLoop(*this); }

void UciHandler::ProcessCommand(std::string_view line) {
    LogOnly(app, "UCI Received: %s\n", std::string(line).c_str());
    const bool searching = theSearcher.searchMode != SearchMode::Idle;
    if (!searching && collectLongPosition(line)) return;

    const Words words = SplitWords(line);
    longPosition.clear();
    if (words.empty()) return;
    if (searching) {
        executeInSearch(words);
    } else {
        execute(words);
    }
    if (words[0] == "isready") {
        Print(app, "readyok\n");
    } else if (words[0] == "quit") {
        ExitProgram(0);
    }
}

bool UciHandler::collectLongPosition(std::string_view& line) {
    constexpr std::string_view Command = "position ";
    const bool cut = line.size() == MaxLineLength && line.back() != '\n';
    if (longPosition.empty()) {
        const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
        if (!cut || !line.substr(start).starts_with(Command)) return false;
    }
    if (longPosition.size() < LongestPosition) longPosition += line;
    // The cut may have fallen between a carriage return and its newline.
    if (!cut) std::erase(longPosition, '\r');
    line = longPosition;
    return cut;
}

void UciHandler::executeInSearch(const Words& words) {
    if (words[0] == "stop") {
        theSearcher.searchMode = SearchMode::Idle;
        theSearcher.stopSearch = true;
        LogOnly(app, "Search stopped\n");
    } else if (words[0] == "ponderhit" && theSearcher.searchMode == SearchMode::Pondering) {
        theSearcher.searchMode = SearchMode::Thinking;
        LogOnly(app, "Search mode switched to normal\n");
    }
}

void UciHandler::execute(const Words& words) {
    struct Command {
        std::string_view word;
        void (*action)(UciHandler&, const Words&);
    };
    static constexpr std::array<Command, 6> Commands{{
        {"xboard",
         [](UciHandler& self, const Words&) {
             self.done = true;
             self.app.requestedProtocol = Protocol::WinBoard;
         }},
        {"ucinewgame", [](UciHandler& self, const Words&) { self.newGame(); }},
        {"genmoves", [](UciHandler&, const Words&) { listLegalMoves(theBoard); }},
        {"setoption", [](UciHandler&, const Words& line) { setOption(line); }},
        {"position", [](UciHandler& self, const Words& line) { self.setPosition(line); }},
        {"go", [](UciHandler& self, const Words& line) { self.go(line); }},
    }};
    for (const Command& command : Commands) {
        if (words[0] == command.word) return command.action(*this, words);
    }
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
        if (words[i] == "infinite") {
            request.mode = SearchMode::Analysing;
            break;
        }
        if (words[i] == "ponder") {
            request.mode = searcher.ponderEnabled ? SearchMode::Pondering : SearchMode::Thinking;
            continue;
        }
        // A keyword without its value means nothing; a blank at the end of the line is no value.
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
