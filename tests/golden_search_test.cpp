#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cstdint>
#include <iterator>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "movegen/move_text.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/uci_listener.h"

namespace brivok {
namespace {

using Json = nlohmann::json;

const std::map<std::string, bool Settings::*> Flags{{"UseLazyEval", &Settings::lazyEvalEnabled},
                                                    {"UseNullMove", &Settings::useNullMove},
                                                    {"DeltaPrune:", &Settings::useDeltaPruning},
                                                    {"Futility:", &Settings::useFutility},
                                                    {"IID:", &Settings::useIid}};
const std::map<std::string, std::int16_t Settings::*> Depths{
    {"NullMoveMin", &Settings::nullMoveMin},
    {"NullMoveMax", &Settings::nullMoveMax},
    {"CheckExtension", &Settings::checkExtension},
    {"RecaptureExtension", &Settings::recaptureExtension},
    {"OneReplyCheckExtension", &Settings::oneReplyExtension},
    {"MateThreatExtension", &Settings::mateThreatExtension},
    {"PawnPushExtension", &Settings::pawnPushExtension}};
const std::map<std::string, std::uint32_t Settings::*> Sizes{{"Hash", &Settings::hashMB},
                                                             {"EvaluationHash", &Settings::EHashMB},
                                                             {"PawnHash", &Settings::PHashMB}};

/// Sets what an option or a key of the settings file stands for.
void applySetting(const std::string& name, const std::string& value) {
    if (Flags.contains(name)) {
        settings.*Flags.at(name) = value == "true";
    } else if (Depths.contains(name)) {
        settings.*Depths.at(name) = unitsFromPercent(std::stoi(value));
    } else if (Sizes.contains(name)) {
        settings.*Sizes.at(name) = static_cast<std::uint32_t>(std::stoul(value));
        transpositionTable.resize();
        evalHashTable.Allocate();
        pawnHashTable.Allocate();
    } else if (name == "AspirationWindow") {
        settings.aspirationWindow = static_cast<std::int16_t>(std::stoi(value));
    } else if (name == "PlayFRC" || name == "Variant:") {
        settings.variant = value == "true"       ? Variant::Fischerandom
                           : value == "nocastle" ? Variant::NoCastle
                                                 : Variant::Normal;
    } else {
        ADD_FAILURE() << "unknown setting " << name;
    }
}

/// The counters in the order of the record; the last one is no result.
constexpr std::array<std::string_view, sizeof(SearchStats) / sizeof(std::uint32_t)> CounterNames{
    "ttStores",     "ttProbes",       "ttHits",          "evalHashStores", "evalHashProbes",
    "evalHashHits", "pawnHashStores", "pawnHashProbes",  "pawnHashHits",   "nullTriesMin",
    "nullTriesMax", "nullCutsMin",    "nullCutsMax",     "seeCuts",        "reSearches",
    "iidSearches",  "futilityCuts",   "razorReductions", "deltaCuts",      "extCheck",
    "extOneReply",  "extMateThreat",  "extRecapture",    "extPawnPush",    "extEndgameCapture",
    "evalFull",     "evalLazy",       "failHighsFirst",  "failHighs",      "nodes",
    "qnodes"};

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

void applyPosition(Board& board, const std::string& line) {
    const std::vector<std::string> words = wordsOf(line);
    const auto moves = std::find(words.begin(), words.end(), "moves");
    if (words.at(1) == "startpos") {
        board.NewGame();
    } else {
        std::string fen;
        for (auto word = words.begin() + 2; word != moves; ++word) fen += *word + " ";
        board.setPositionFromFen(fen);
    }
    for (auto word = moves; word != words.end(); ++word) {
        const Move move = parseMove(board, *word);
        if (move != NoMove) board.playGameMove(move);
    }
}

/// Info lines of a captured output as the records hold them: without the clock's doing, without
/// blanks at the end, and without the lines that only a slow search prints.
std::vector<std::string> infoLines(const std::string& output) {
    std::vector<std::string> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with("info depth")) continue;
        std::string masked;
        bool fromClock = false;
        for (const std::string& word : wordsOf(line)) {
            if (!masked.empty()) masked += ' ';
            masked += fromClock ? "0" : word;
            fromClock = word == "time" || word == "nps";
        }
        lines.push_back(masked);
    }
    return lines;
}

struct Record {
    std::string name;
    Json data;
};

void PrintTo(const Record& record, std::ostream* out) { *out << record.name; }

std::vector<Record> recordsOf(const std::string& file) {
    std::vector<Record> records;
    for (const Json& data : loadJson(file)) {
        std::string name = data.contains("name")
                               ? data["name"].get<std::string>()
                               : data["kind"].get<std::string>() + "_" + data["id"].dump();
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
        records.push_back({name, data});
    }
    return records;
}

std::string nameOf(const ::testing::TestParamInfo<Record>& instance) { return instance.param.name; }

class GoldenSearch : public EngineTest, public ::testing::WithParamInterface<Record> {
protected:
    /// Searches as `go` does. Returns what was printed meanwhile.
    std::string go(const std::string& line) {
        const std::vector<std::string> words = wordsOf(line);
        SearchRequest request{.clock = TimeControl{}};
        for (std::size_t i = 1; i + 1 < words.size(); i += 2) {
            const int value = std::stoi(words[i + 1]);
            if (words[i] == "depth") request.maxIteration = value;
            if (words[i] == "nodes") request.nodeLimit = static_cast<std::uint32_t>(value);
        }
        ::testing::internal::CaptureStdout();
        const Move best = theSearcher.think(request, listener);
        theSearcher.searchMode = SearchMode::Idle;
        bestMoveLine = "bestmove " + moveToCoordinate(best);
        if (theSearcher.ponderMove != NoMove) {
            bestMoveLine += " ponder " + moveToCoordinate(theSearcher.ponderMove);
        }
        return ::testing::internal::GetCapturedStdout();
    }

    void runStep(const Json& step) {
        if (step.contains("command")) {
            ASSERT_EQ(step["command"], "ucinewgame");
            board.NewGame();
            return;
        }
        if (!step["position"].is_null()) applyPosition(board, step["position"]);
        const std::string before = snapshot(board);
        const std::vector<std::string> lines = infoLines(go(step["go"]));
        EXPECT_TRUE(snapshot(board) == before) << "the search left the position changed";
        compare(step, lines);
    }

    void compare(const Json& step, const std::vector<std::string>& lines) {
        const auto& nodes = theSearcher.nodesAtIteration;
        for (std::size_t i = 0; i < step["nodesAtIteration"].size(); ++i) {
            ASSERT_EQ(nodes.at(i + 1), step["nodesAtIteration"][i])
                << "the first iteration that differs is " << i + 1;
        }
        std::string bestMove = step["bestmoveLine"];
        bestMove.erase(bestMove.find_last_not_of(' ') + 1);
        EXPECT_EQ(bestMoveLine, bestMove);
        EXPECT_EQ(theSearcher.iterationScore, step["iterationScore"]);
        EXPECT_EQ(static_cast<int>(theSearcher.gameOutcome), step["gameOutcome"]);
        EXPECT_EQ(theSearcher.iteration, step["iteration"]);
        EXPECT_EQ(theSearcher.selDepth, step["selDepth"]);
        const auto counters =
            std::bit_cast<std::array<std::uint32_t, CounterNames.size()>>(searchStats);
        for (std::size_t i = 0; i + 1 < CounterNames.size(); ++i) {
            EXPECT_EQ(counters[i], step["stats"].at(CounterNames[i])) << CounterNames[i];
        }
        std::string expected;
        for (const std::string line : step["info"]) expected += line + "\n";
        EXPECT_EQ(lines, infoLines(expected));
        if (step.contains("repetitions")) {
            EXPECT_EQ(board.countRepetitions(0).inGame, step["repetitions"]);
            EXPECT_EQ(board.hashKey, std::stoull(step["hashKey"].get<std::string>(), nullptr, 16));
        }
    }

    UciListener listener{*theApplication};
    std::string bestMoveLine;
};

TEST_P(GoldenSearch, MatchesRecord) {
    const Json& record = GetParam().data;
    const std::vector<std::string> none;
    for (const std::string& line : record.value("setoption", none)) {
        const std::vector<std::string> words = wordsOf(line);  // setoption name X value Y
        applySetting(words.at(2), words.at(4));
    }
    for (const std::string& line : record.value("config", none)) {
        const std::vector<std::string> words = wordsOf(line);
        applySetting(words.at(0), words.at(1));
    }
    const char* const parts = record.contains("searches") ? "searches" : "steps";
    if (!record.contains(parts)) return runStep(record);
    int number = 0;
    for (const Json& step : record[parts]) {
        SCOPED_TRACE("step " + std::to_string(++number));
        runStep(step);
        if (HasFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Search, GoldenSearch, ::testing::ValuesIn(recordsOf("search.json")),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Game, GoldenSearch, ::testing::ValuesIn(recordsOf("game.json")), nameOf);

}  // namespace
}  // namespace brivok
