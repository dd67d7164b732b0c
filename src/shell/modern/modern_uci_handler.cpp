#include "shell/modern/modern_uci_handler.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include "board/strict_fen.h"
#include "movegen/legal_moves.h"
#include "search/fallback_move.h"
#include "search/searcher.h"
#include "shell/base/console.h"
#include "shell/base/fields.h"
#include "shell/board_diagram.h"
#include "shell/modern/go_order.h"
#include "shell/modern/interface_moves.h"
#include "shell/modern/modern_options.h"

namespace brivok {

namespace {

constexpr char Blanks[] = " \t\r\n";

/// Milliseconds of a centisecond.
constexpr int ClockResolution = 10;

std::string joined(std::span<const std::string> words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

/// What follows the first `count` words of a line, without the blanks around it.
std::string restBehind(std::string_view line, std::size_t count) {
    std::size_t at = line.find_first_not_of(Blanks);
    for (; count > 0 && at != line.npos; --count) {
        at = line.find_first_not_of(Blanks, line.find_first_of(Blanks, at));
    }
    if (at == line.npos) return "";
    return std::string(line.substr(at, line.find_last_not_of(Blanks) + 1 - at));
}

/// Takes some centiseconds from a clock, but not the last one.
void takeFrom(std::uint32_t& time, std::uint32_t centiseconds) {
    time = time > centiseconds ? time - centiseconds : 1;
}

bool isHeldBack(SearchMode mode) {
    return mode == SearchMode::Pondering || mode == SearchMode::Analysing;
}

}  // namespace

ModernUciHandler::ModernUciHandler(Application& application)
    : UciHandler(application, Unannounced{}) {
    theSearcher.forgetGame();
    introduceAll();
}

ModernUciHandler::~ModernUciHandler() { theSearcher.forgetGame(); }

CommandTable<ModernUciHandler, ModernUciHandler::Input> ModernUciHandler::ownTable(bool searching) {
    using Entry = Command<ModernUciHandler, Input>;
    constexpr auto introduceAll = [](ModernUciHandler& self, const Input&) { self.introduceAll(); };
    constexpr auto refuse = [](ModernUciHandler& self, const Input& in) { self.refuse(in); };
    constexpr auto accept = [](ModernUciHandler&, const Input&) {};
    static constexpr Entry WhileSearching[] = {
        {"uci", introduceAll},
        {"ponderhit", [](ModernUciHandler& self, const Input&) { self.ponderHit(); }},
        {"setoption", refuse},
        {"position", refuse},
        {"ucinewgame", refuse},
        {"go", refuse},
        {"genmoves", refuse},
        {"xboard", refuse},
        {"debug", accept},
        {"register", accept},
    };
    static constexpr Entry WhileIdle[] = {
        {"uci", introduceAll},
        {"setoption", [](ModernUciHandler& self, const Input& in) { self.setOption(in); }},
        {"position", [](ModernUciHandler& self, const Input& in) { self.setPosition(in.words); }},
        {"go", [](ModernUciHandler& self, const Input& in) { self.go(in.words); }},
        // Too late to be of use.
        {"stop", accept},
        {"ponderhit", accept},
        {"debug", accept},
        {"register", accept},
    };
    if (searching) return WhileSearching;
    return WhileIdle;
}

std::vector<std::string_view> ModernUciHandler::commands(bool searching) {
    std::vector<std::string_view> words = wordsOf(ownTable(searching));
    for (const std::string_view word : UciHandler::commands(searching)) {
        if (std::ranges::find(words, word) == words.end()) words.push_back(word);
    }
    return words;
}

void ModernUciHandler::ProcessCommand(std::string_view line) {
    LogOnly(app, "UCI Received: %s\n", std::string(line).c_str());
    const bool searching = theSearcher.searchMode != SearchMode::Idle;
    if (!searching && collectLongPosition(line)) return;

    const auto fields = fieldsOf(line);
    const Input input{std::string(line), {fields.begin(), fields.end()}};
    longPosition.clear();
    if (input.words.empty()) return;
    const std::string& command = input.words[0];
    if (execute(ownTable(searching), command, *this, input)) return;
    UciHandler& plain = *this;
    (void)execute(table(searching), command, plain, input.words);
}

void ModernUciHandler::introduceAll() {
    introduce();
    listModernOptions(app);
    Print(app, "uciok\n");
}

void ModernUciHandler::complain(const std::string& text) {
    Print(app, "info string %s\n", text.c_str());
}

void ModernUciHandler::refuse(const Input& input) {
    complain("'" + input.words[0] + "' has no effect during a search");
}

// --- Options --------------------------------------------------------------------------------

void ModernUciHandler::setOption(const Input& input) {
    const std::span<const std::string> words = input.words;
    const auto value = std::find(words.begin(), words.end(), "value");
    const auto count = static_cast<std::size_t>(value - words.begin());
    if (count < 3 || words[1] != "name") {
        return complain("setoption needs 'name' and the name of an option");
    }
    const std::string text = value == words.end() ? "" : restBehind(input.line, count + 1);
    const std::string fault = setModernOption(joined(words.subspan(2, count - 2)), text);
    if (!fault.empty()) complain(fault);
}

// --- Positions ------------------------------------------------------------------------------

void ModernUciHandler::setPosition(const Words& words) {
    const auto moves = std::find(words.begin() + 1, words.end(), "moves");
    if (!setUp({words.begin() + 1, moves}) || moves == words.end()) return;
    for (auto word = moves + 1; word != words.end(); ++word) {
        const Move move = readMove(theBoard, *word);
        if (move == NoMove) {
            complain("'" + *word + "' is not a legal move; the position is the one before it");
            break;
        }
        theBoard.playGameMove(move);
    }
    PrintBoard(app, theBoard);
}

bool ModernUciHandler::setUp(const Words& description) {
    if (!description.empty() && description[0] == "fen") {
        const std::string fault =
            setUpPosition(theBoard, joined(std::span(description).subspan(1)));
        if (!fault.empty()) complain(fault + "; the position is the one before");
        PrintBoard(app, theBoard);
        return fault.empty();
    }
    if (description == Words{"startpos"}) {
        theBoard.NewGame();
        return true;
    }
    complain("position needs 'startpos' or 'fen', and 'moves' before moves");
    return false;
}

// --- The search -----------------------------------------------------------------------------

void ModernUciHandler::go(const Words& words) {
    Searcher& searcher = theSearcher;
    GoOrder order = readGo(theBoard, words, searcher.ponderEnabled);
    for (const std::string& fault : order.faults) complain(fault);
    order.request.searchMoves = order.searchMoves;
    applyOptions(order.request);

    searcher.forgetGame();
    reporter.begin(searcher.progress());
    Move best = searcher.think(order.request, reporter);
    if (best == NoMove) best = fallbackMove(theBoard, transpositionTable, order.searchMoves);
    reporter.finish(searcher.progress(), best, searcher.gameOutcome);
    tellMissingMate(order.request.mateIn);
    awaitPermission();
    searcher.searchMode = SearchMode::Idle;
    answer(best);
}

void ModernUciHandler::applyOptions(SearchRequest& request) {
    const bool analyses = request.mode == SearchMode::Analysing;
    request.lines = modernSettings.lines;
    request.searchesOnlyMove = analyses || request.mateIn != 0 || !request.searchMoves.empty();

    TimeControl& clock = *request.clock;
    request.clockCounts = clock.clockGiven;
    if (clock.clockGiven) {
        const int overhead = (modernSettings.moveOverhead + ClockResolution - 1) / ClockResolution;
        takeFrom(clock.kind == ClockKind::FixedTime ? clock.fixedTime : clock.ownTime,
                 static_cast<std::uint32_t>(overhead));
    }

    if (!modernSettings.limitStrength || analyses) return;
    const std::uint32_t nodes = nodesOfElo(modernSettings.elo);
    request.nodeLimit = request.nodeLimit == 0 ? nodes : std::min(request.nodeLimit, nodes);
}

void ModernUciHandler::tellMissingMate(int moves) {
    const int score = theSearcher.iterationScore;
    if (moves == 0 || (score > MateBound && movesToMate(score) <= moves)) return;
    complain("no mate in " + std::to_string(moves) + " found");
}

void ModernUciHandler::awaitPermission() {
    std::string_view line;
    while (isHeldBack(theSearcher.searchMode) && ReadLine(app, line)) ProcessCommand(line);
}

void ModernUciHandler::ponderHit() {
    if (theSearcher.searchMode != SearchMode::Pondering) return;
    theSearcher.takePonderHit();
    LogOnly(app, "Search mode switched to normal\n");
}

void ModernUciHandler::answer(Move best) {
    const CastlingStyle style = modernSettings.castlingStyle;
    const Move reply = theSearcher.ponderMove;
    std::string text =
        "\nbestmove " + (best == NoMove ? "0000" : moveText(theBoard, best, style)) + " ";
    if (best != NoMove && reply != NoMove && theSearcher.ponderEnabled) {
        // On a copy, which leaves the undo records alone.
        const auto after = std::make_unique<Board>(theBoard);
        after->makeMove(best);
        if (isLegalMove(*after, reply)) text += "ponder " + moveText(*after, reply, style);
    }
    Print(app, "%s\n", text.c_str());
}

}  // namespace brivok
