// Compares the answers recorded in tests/data with the engine's; tests/record renews them.

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine_fixture.h"
#include "replay.h"

namespace brivok {
namespace {

using Json = nlohmann::json;

/// Each difference tells the value of the replay. A key that no replay reads or answers is one too.
void expectAsReplayed(const Json& record, const Json& anew) {
    const Json differences = Json::diff(record, anew);
    for (const Json& difference : differences) ADD_FAILURE() << difference;
    EXPECT_TRUE(differences.empty()) << "If the engine is meant to answer so, run tests/record.";
}

TEST(RecordsTest, FilesAreAsTheRecorderWritesThem) {
    for (const RecordFile& file : RecordFiles) {
        std::ifstream stream(dataPath(file.name), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        EXPECT_TRUE(text == fileText(Json::parse(text))) << file.name;
    }
}

TEST(RecordsTest, Positions) {
    const Json records = loadJson("positions.json");
    ASSERT_FALSE(records.empty());
    for (const Json& record : records) {
        SCOPED_TRACE(record["id"].dump() + " " + record["fen"].dump());
        expectAsReplayed(record, replayPosition(record));
        expectConsistent(theBoard);
    }
}

/// To render a line leaves moves in undo records that the search reads.
TEST(RecordsTest, PostingIsPartOfTheTree) {
    const Json records = loadJson("posting.json");
    ASSERT_FALSE(records.empty());
    for (const Json& record : records) {
        SCOPED_TRACE(record["fen"]);
        expectAsReplayed(record, replayPosting(record));
        EXPECT_NE(record["post"], record["nopost"]) << "another position is wanted here";
    }
}

struct Search {
    std::string name;
    Json record;
};

void PrintTo(const Search& search, std::ostream* out) { *out << search.name; }

std::vector<Search> searchesOf(const std::string& file) {
    std::vector<Search> searches;
    for (const Json& record : loadJson(file)) {
        std::string name = record.contains("name")
                               ? record["name"].get<std::string>()
                               : record["kind"].get<std::string>() + "_" + record["id"].dump();
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
        searches.push_back({name, record});
    }
    return searches;
}

std::string nameOf(const ::testing::TestParamInfo<Search>& instance) { return instance.param.name; }

class SearchRecord : public ::testing::TestWithParam<Search> {};

TEST_P(SearchRecord, IsAsReplayed) {
    const Json& record = GetParam().record;
    expectAsReplayed(record, replaySearch(record));
}

INSTANTIATE_TEST_SUITE_P(Search, SearchRecord, ::testing::ValuesIn(searchesOf("search.json")),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Game, SearchRecord, ::testing::ValuesIn(searchesOf("game.json")), nameOf);

}  // namespace
}  // namespace brivok
