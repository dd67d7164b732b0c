#include "search/searcher.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "engine_fixture.h"

namespace brivok {
namespace {

/// A searcher whose parts are all its own.
class OwnSearcher {
public:
    OwnSearcher(std::string_view fen, const Settings& rules) : options(rules) {
        board->rules = &options;
        board->setPositionFromFen(fen);
        table.resize();
        evalHash.Allocate();
        pawnHash.Allocate();
    }

    std::uint32_t search(int depth, SearchListener& listener) {
        move = searcher.think({.maxIteration = depth}, listener);
        return stats.nodes;
    }

    Move move = NoMove;

private:
    Settings options;
    std::unique_ptr<Board> board = std::make_unique<Board>();
    SearchStats stats{};
    TimeControl clock;
    TranspositionTable table;
    EvalHashTable evalHash;
    PawnHashTable pawnHash;
    Evaluation evaluation{evalHash, pawnHash, stats, options};
    Searcher searcher{{*board, options, stats, clock, table, evaluation, tablebases}};
};

/// Starts another search, once, in the middle of the search it listens to.
class Interrupter : public SearchListener {
public:
    Interrupter(OwnSearcher& another, int itsDepth) : other(another), depth(itsDepth) {}

    void onIteration(const SearchProgress&, int, SearchEvent) override {
        if (nodes != 0) return;
        SearchListener silent;
        nodes = other.search(depth, silent);
    }

    std::uint32_t nodes = 0;

private:
    OwnSearcher& other;
    int depth;
};

constexpr int Depth = 6;
constexpr char Normal[] = "r2q1rk1/1b2bppp/p1n1pn2/1p6/3N4/1BN1B3/PPP2PPP/R2QR1K1 w - - 2 13";
constexpr char Chess960[] = "qrkb1nbr/pppppppp/8/4P3/2P2n2/8/PPNP1PPP/QRKB1NBR b KQkq - 2 4";

/// Two searches that interrupt each other, with different rules and settings, find the same as each
/// does alone and leave the engine's own parts unchanged.
TEST_F(EngineTest, SearchersWithPartsOfTheirOwnDoNotDisturbEachOther) {
    Settings first;
    Settings second;
    second.variant = Variant::Fischerandom;
    second.useNullMove = false;
    second.lazyEvalEnabled = true;
    SearchListener silent;
    OwnSearcher firstAlone(Normal, first);
    const std::uint32_t firstNodes = firstAlone.search(Depth, silent);
    OwnSearcher secondAlone(Chess960, second);
    const std::uint32_t secondNodes = secondAlone.search(Depth, silent);

    const std::string before = snapshot(board);
    OwnSearcher inner(Chess960, second);
    OwnSearcher outer(Normal, first);
    Interrupter listener(inner, Depth);
    EXPECT_EQ(outer.search(Depth, listener), firstNodes);
    EXPECT_EQ(listener.nodes, secondNodes);
    EXPECT_EQ(outer.move, firstAlone.move);
    EXPECT_EQ(inner.move, secondAlone.move);
    EXPECT_TRUE(snapshot(board) == before);
    EXPECT_EQ(searchStats.nodes, 0U);
    EXPECT_EQ(theSearcher.iteration, 0);
}

}  // namespace
}  // namespace brivok
