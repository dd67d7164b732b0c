#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine_fixture.h"
#include "movegen/san.h"
#include "tools/epd_runner.h"

namespace brivok {
namespace {

using ToolsTest = EngineTest;

TEST_F(ToolsTest, SolutionsAreTextsWithinTheLine) {
    setPosition("6k1/5ppp/8/8/8/8/4P3/R3K3 w Q - 0 1");
    const auto solves = [this](const char* operations, const char* move) {
        return CheckSolution(board, operations, moveNamed(board, move));
    };
    EXPECT_TRUE(solves("bm Ra8#;", "a1a8"));
    EXPECT_TRUE(solves("bm Ke2 Ra8#; id \"am\";", "a1a8"));
    EXPECT_FALSE(solves("bm Ra8+;", "a1a8"));
    EXPECT_TRUE(solves("bm Be4;", "e2e4"));
    EXPECT_TRUE(solves("id \"Ra8#\"; bm O-O-O;", "a1a8"));
    EXPECT_FALSE(solves("am Ra8#;", "a1a8"));
    EXPECT_TRUE(solves("am Ra8;", "a1a8"));
    EXPECT_FALSE(solves("id \"Ra8#\";", "a1a8"));
    EXPECT_FALSE(CheckSolution(board, "bm Ra8#", NoMove));
}

/// In every shipped suite, each line is solved by the moves it names and by no others.
TEST_F(ToolsTest, SuitesNameMovesAsTheEngineWritesThem) {
    int suites = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dataPath("../../data/suites"))) {
        if (entry.path().extension() != ".epd") continue;
        ++suites;
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            SCOPED_TRACE(line);
            setPosition(line);
            std::istringstream words(line.substr(0, line.find(';')));
            std::vector<std::string> named;
            for (std::string word; words >> word;) named.push_back(word);
            ASSERT_GE(named.size(), 6U);
            const bool best = named[4] == "bm";
            ASSERT_TRUE(best || named[4] == "am");
            named.erase(named.begin(), named.begin() + 5);

            std::size_t known = 0;
            for (const Move move : legalMoves(board, generatedMoves(board))) {
                const bool isNamed = std::count(named.begin(), named.end(), moveToSan(board, move));
                known += isNamed ? 1 : 0;
                EXPECT_EQ(CheckSolution(board, line, move), isNamed == best)
                    << moveToSan(board, move);
            }
            EXPECT_EQ(known, named.size());
        }
    }
    EXPECT_GE(suites, 3);
}

}  // namespace
}  // namespace brivok
