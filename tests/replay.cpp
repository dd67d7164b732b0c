#include "replay.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <set>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "eval/evaluate.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/search_stats.h"
#include "movegen/generate.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "movegen/perft.h"
#include "movegen/san.h"
#include "program.h"
#include "search/searcher.h"
#include "shell/configuration.h"

namespace brivok {

namespace {

using Json = nlohmann::json;

/// The inputs of these names, as far as the record has them.
Json inputsOf(const Json& record, std::initializer_list<const char*> names) {
    Json inputs = Json::object();
    for (const char* const name : names) {
        if (record.contains(name)) inputs[name] = record[name];
    }
    return inputs;
}

std::string keyText(std::uint64_t key) {
    std::array<char, 19> text{};
    (void)std::snprintf(text.data(), text.size(), "0x%016llX",
                        static_cast<unsigned long long>(key));
    return text.data();
}

/// Notes the position and complains when it is another one in the end.
class Unchanged {
public:
    void check() const {
        if (snapshot(theBoard) != before) throw std::logic_error("the position is left changed");
    }

private:
    std::string before = snapshot(theBoard);
};

// --- Positions ---------------------------------------------------------------------------------

Json names(std::span<const Move> moves) {
    Json list = Json::array();
    for (const Move move : moves) list.push_back(moveToCoordinate(move));
    return list;
}

Json bySide(int white, int black) { return {{"white", white}, {"black", black}}; }

int freshEvaluation(Board& board) {
    evalHashTable.Clear();
    pawnHashTable.Clear();
    theEvaluation.lazyMargin = 0;
    return Evaluate(board, -MateScore, MateScore);
}

Json stateOf(const Board& board) {
    return {{"hashKey", keyText(board.hashKey)},
            {"pawnKey", keyText(board.pawnKey)},
            {"epSquare", board.epSquare},
            {"castling", board.castling},
            {"fiftyCount", board.fiftyCount},
            {"ply", board.gamePly()},
            {"inCheck", board.inCheck()},
            {"material", bySide(board.material[White], board.material[Black])},
            {"phaseCount", bySide(board.phaseCount[White], board.phaseCount[Black])},
            {"pawnCount",
             bySide(board.pawnCount[whiteFirst(White)], board.pawnCount[whiteFirst(Black)])},
            {"pieceCount",
             bySide(board.pieceCount[whiteFirst(White)], board.pieceCount[whiteFirst(Black)])},
            {"kingStart", board.kingStart},
            {"whiteRookStart", board.whiteRookStart},
            {"blackRookStart", board.blackRookStart}};
}

/// The lists in the order of their generators, and the exchange values of the captures.
Json movesOf(Board& board) {
    Json answers;
    MoveList list;
    generateCaptures(board, list);
    const std::span captures = generated(board, list);
    answers["captures"] = names(captures);
    std::set<Json> values;
    for (const Move move : captures) {
        const int value = board.see(opposite(board.sideToMove), moveTo(move), moveFrom(move),
                                    movePromotion(move));
        values.insert(Json::array({moveToCoordinate(move), value}));
    }
    answers["see"] = values;

    if (!board.inCheck()) {
        generateNonCaptures(board, list);  // behind the captures
        answers["nonCaptures"] = names(generated(board, list).subspan(captures.size()));
    }
    const std::vector<Move> moves = generatedMoves(board);
    answers["moveWords"] = moves;
    if (board.inCheck()) answers["evasions"] = names(moves);
    answers["san"] = Json::array();
    for (const Move move : legalMoves(board, moves)) {
        answers["san"].push_back(Json::array({moveToCoordinate(move), moveToSan(board, move)}));
    }
    return answers;
}

// --- Searches ----------------------------------------------------------------------------------

/// The counters in their order; the last one is no result.
constexpr std::array<std::string_view, sizeof(SearchStats) / sizeof(std::uint32_t)> CounterNames{
    "ttStores",     "ttProbes",       "ttHits",          "evalHashStores", "evalHashProbes",
    "evalHashHits", "pawnHashStores", "pawnHashProbes",  "pawnHashHits",   "nullTriesMin",
    "nullTriesMax", "nullCutsMin",    "nullCutsMax",     "seeCuts",        "reSearches",
    "iidSearches",  "futilityCuts",   "razorReductions", "deltaCuts",      "extCheck",
    "extOneReply",  "extMateThreat",  "extRecapture",    "extPawnPush",    "extEndgameCapture",
    "evalFull",     "evalLazy",       "failHighsFirst",  "failHighs",      "nodes",
    "qnodes"};

Json counters() {
    Json named;
    const auto values = std::bit_cast<std::array<std::uint32_t, CounterNames.size()>>(searchStats);
    for (std::size_t i = 0; i + 1 < values.size(); ++i) named[CounterNames[i]] = values[i];
    return named;
}

/// By iteration from the first on, as far as they have finished.
Json finishedIterations() {
    Json nodes = Json::array();
    for (std::size_t i = 1; i < theSearcher.nodesAtIteration.size(); ++i) {
        if (theSearcher.nodesAtIteration[i] == 0) break;
        nodes.push_back(theSearcher.nodesAtIteration[i]);
    }
    return nodes;
}

Json linesOf(const std::string& text) {
    Json lines = Json::array();
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// A search in silence may look at the clock for each of its root moves.
constexpr std::uint64_t Patience = 1'000'000;

Json replayStep(Program& program, const Json& step) {
    Json anew = inputsOf(step, {"command", "position", "go"});
    for (const char* const before : {"command", "position"}) {
        if (step.contains(before)) program.type(step[before].get<std::string>());
    }
    program.run();
    if (!step.contains("go")) return anew;

    const Unchanged position;
    theSearcher.nodesAtIteration.fill(0);
    const std::size_t start = program.output().size();
    program.type(step.at("go").get<std::string>());
    program.run();
    position.check();

    anew["output"] = linesOf(program.output().substr(start));
    anew["nodesAtIteration"] = finishedIterations();
    anew["iterationScore"] = theSearcher.iterationScore;
    anew["gameOutcome"] = theSearcher.gameOutcome;
    anew["iteration"] = theSearcher.iteration;
    anew["selDepth"] = theSearcher.selDepth;
    anew["stats"] = counters();
    anew["repetitions"] = theBoard.countRepetitions(0).inGame;
    anew["hashKey"] = keyText(theBoard.hashKey);
    return anew;
}

void applyConfig(const std::string& line) {
    std::istringstream words(line);
    std::string key;
    std::string value;
    words >> key >> value;
    if (!setKey(key, value)) throw std::invalid_argument("unknown key " + key);
}

Json countersAfter(std::initializer_list<std::string> lines) {
    Program program;
    program.outside.patience = Patience;
    for (const std::string& line : lines) program.type(line);
    program.run();
    return counters();
}

}  // namespace

Json replayPosition(const Json& record) {
    const Program program;
    Board& board = theBoard;
    setPosition(record.at("fen").get<std::string>(), record.at("variant").get<Variant>());
    for (const std::string move : record.at("moves")) {
        if (!playMoves(board, move)) throw std::invalid_argument("no move " + move);
    }

    const Unchanged position;
    Json anew = inputsOf(record, {"id", "tag", "fen", "variant", "moves"});
    anew.update(stateOf(board));
    anew.update(movesOf(board));
    anew["evaluate"] = freshEvaluation(board);
    if (!board.inCheck()) {
        board.makeNullMove();
        anew["afterNull"] = {{"hashKey", keyText(board.hashKey)},
                             {"pawnKey", keyText(board.pawnKey)},
                             {"evaluate", freshEvaluation(board)}};
        board.unmakeNullMove();
    }
    const std::size_t depth = record.at("perft").size();
    const PerftNodes nodes = countPerft(board, depth);
    anew["perft"] = std::span(nodes).subspan(1, depth);
    position.check();
    return anew;
}

Json replaySearch(const Json& record) {
    Json anew = inputsOf(record, {"name", "id", "kind", "config", "setoption"});
    const std::vector<std::string> none;
    Program program;
    program.outside.patience = Patience;
    for (const std::string& line : record.value("config", none)) applyConfig(line);
    program.type("uci");
    for (const std::string& line : record.value("setoption", none)) program.type(line);
    if (record.contains("steps")) {
        for (const Json& step : record["steps"]) anew["steps"].push_back(replayStep(program, step));
    } else {
        anew.update(replayStep(program, record));
    }
    return anew;
}

Json replayPosting(const Json& record) {
    Json anew = inputsOf(record, {"fen", "depth"});
    const std::string fen = record.at("fen");
    const std::string depth = record.at("depth").dump();
    anew["uci"] = countersAfter({"uci", "position fen " + fen, "go depth " + depth});
    for (const char* const posting : {"post", "nopost"}) {
        anew[posting] =
            countersAfter({"xboard", "easy", posting, "setboard " + fen, "sd " + depth, "go"});
    }
    return anew;
}

std::string fileText(const Json& records) {
    std::string text;
    for (const Json& record : records) text += (text.empty() ? "[\n" : ",\n") + record.dump();
    return text + "\n]\n";
}

}  // namespace brivok
