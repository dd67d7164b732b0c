#include "movegen/perft.h"

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "engine_fixture.h"

namespace brivok {
namespace {

struct Counts {
    std::string fen;
    std::map<std::size_t, std::uint64_t> nodes;  ///< by depth
};

/// Reads a line "fen ;D1 20 ;D2 400 ..."; some lines skip depths.
Counts readCounts(const std::string& line) {
    std::istringstream fields(line);
    Counts counts;
    std::getline(fields, counts.fen, ';');
    for (std::string field; std::getline(fields, field, ';');) {
        const std::size_t blank = field.find(' ');
        counts.nodes[std::stoul(field.substr(1, blank))] = std::stoull(field.substr(blank));
    }
    return counts;
}

/// The files are split so that the parts can run in parallel.
constexpr int Parts = 4;

class PerftFile : public EngineTest,
                  public ::testing::WithParamInterface<std::tuple<const char*, Variant, int>> {};

TEST_P(PerftFile, CountsMatch) {
    const std::uint64_t limit =
        fromEnvironment("BRIVOK_PERFT_NODES", SlowBuild ? 20'000 : 1'500'000);
    const auto [name, variant, part] = GetParam();
    std::ifstream file(dataPath(name));
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        if (number++ % Parts != part) continue;
        const Counts counts = readCounts(line);
        std::size_t depth = 0;
        for (const auto& [d, nodes] : counts.nodes) depth = nodes <= limit ? d : depth;
        setPosition(counts.fen, variant);
        const std::string before = snapshot(board);
        const PerftNodes nodes = countPerft(board, depth);
        for (const auto& [d, expected] : counts.nodes) {
            if (d > depth) break;
            EXPECT_EQ(nodes.at(d), expected) << "depth " << d << ": " << line;
            EXPECT_EQ(countLeaves(board, d), expected) << "depth " << d << ": " << line;
        }
        EXPECT_TRUE(snapshot(board) == before) << line;
    }
    EXPECT_GE(number, 64);
}

INSTANTIATE_TEST_SUITE_P(Normal, PerftFile,
                         ::testing::Combine(::testing::Values("perft_normal.epd"),
                                            ::testing::Values(Variant::Normal),
                                            ::testing::Range(0, Parts)));
INSTANTIATE_TEST_SUITE_P(Fischerandom, PerftFile,
                         ::testing::Combine(::testing::Values("perft_fischerandom.epd"),
                                            ::testing::Values(Variant::Fischerandom),
                                            ::testing::Range(0, Parts)));

class Perft : public EngineTest {};

TEST_F(Perft, SmallCases) {
    const struct {
        const char* fen;
        Variant variant;
        unsigned depth;
        std::uint32_t nodes;
    } cases[] = {
        {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", Variant::Normal, 3, 2812},
        {"1rkr4/pppppppp/8/8/8/8/PPPPPPPP/1RKR4 w KQkq - 0 1", Variant::Fischerandom, 2, 484},
        {"rk5r/pppppppp/8/8/8/8/PPPPPPPP/RK5R w KQkq - 0 1", Variant::Fischerandom, 2, 576},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", Variant::NoCastle, 1, 24},
    };
    for (const auto& [fen, variant, depth, nodes] : cases) {
        setPosition(fen, variant);
        EXPECT_EQ(countPerft(board, depth)[depth], nodes) << fen;
        EXPECT_EQ(countLeaves(board, depth), nodes) << fen;
    }
}

TEST_F(Perft, MateLeavesDeeperEntriesEmpty) {
    setPosition("6k1/5ppp/8/8/8/8/8/R3K3 w - - 0 1");
    ASSERT_TRUE(playMoves(board, "a1a8"));
    for (const std::uint32_t count : countPerft(board, MaxPerftDepth)) EXPECT_EQ(count, 0U);
}

}  // namespace
}  // namespace brivok
