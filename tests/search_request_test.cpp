// What a search can be asked for: several best lines, a choice of moves, a mate, the only move.

#include <algorithm>
#include <climits>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "movegen/legal_moves.h"
#include "search/fallback_move.h"
#include "search/searcher.h"

namespace brivok {
namespace {

constexpr char Middle[] =
    "r3r1k1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10";
constexpr char Checked[] = "rnbqk1nr/pppp1ppp/8/4p3/1b1PP3/8/PPP2PPP/RNBQKBNR w KQkq - 1 3";
constexpr char TwoMatesInOne[] = "7k/8/5K2/8/8/8/Q7/R7 w - - 0 1";
constexpr char MateInOne[] = "6k1/5ppp/8/8/8/8/5PPP/R5K1 w - - 0 1";
constexpr char MateInFour[] = "r6k/6pp/8/4N3/8/1Q6/6PP/6K1 w - - 0 1";
constexpr char OnlyMove[] = "k7/8/8/8/8/8/1q6/K7 w - - 0 1";

std::vector<Move> legalMovesOf(Board& board) { return legalMoves(board, generatedMoves(board)); }

/// Checks each report of lines and keeps the last one.
class LineKeeper : public SearchListener {
public:
    LineKeeper() : SearchListener(1) {}

    void onLines(const SearchProgress& progress, std::span<const SearchLine> lines) override {
        iterations.push_back(progress.iteration);
        moves.clear();
        scores.clear();
        for (const SearchLine& line : lines) {
            ASSERT_FALSE(line.moves.empty());
            moves.push_back(line.moves[0]);
            scores.push_back(line.score);
            expectPlayable(progress.board, line.moves);
        }
        EXPECT_TRUE(std::ranges::is_sorted(scores, std::greater{}));
        EXPECT_EQ(std::set(moves.begin(), moves.end()).size(), moves.size());
        EXPECT_EQ(progress.board.pvTable[1][1], moves[0]);
    }
    void onIteration(const SearchProgress& /*progress*/, int /*score*/,
                     SearchEvent /*event*/) override {
        ++plainReports;
    }
    void onRootMove(const SearchProgress& progress, bool /*firstOfPass*/) override {
        rootMoves = std::max(rootMoves, progress.rootMovesTotal);
    }

    std::vector<int> iterations;  ///< of the reports
    std::vector<Move> moves;      ///< of the last report
    std::vector<int> scores;
    int plainReports = 0;
    int rootMoves = 0;  ///< most in a pass

private:
    static void expectPlayable(Board& board, std::span<const Move> line) {
        std::size_t made = 0;
        for (const Move move : line) {
            if (!isLegalMove(board, move)) break;
            board.makeMove(move);
            ++made;
        }
        EXPECT_EQ(made, line.size());
        for (; made != 0; --made) board.unmakeMove();
    }
};

class RequestTest : public EngineTest {
protected:
    Move think(const SearchRequest& request) {
        keeper.emplace();
        theSearcher.forgetGame();
        const Move move = theSearcher.think(request, *keeper);
        theSearcher.searchMode = SearchMode::Idle;
        return move;
    }

    Move move(std::string_view text) { return moveNamed(board, text); }

    std::optional<LineKeeper> keeper;
};

TEST_F(RequestTest, LinesOfEachIteration) {
    for (const char* const fen : {Middle, Checked, TwoMatesInOne}) {
        for (const int lines : {2, 200}) {
            setPosition(fen);
            const std::string before = snapshot(board);
            const std::size_t legal = legalMovesOf(board).size();
            const Move best = think({.maxIteration = 4, .lines = lines});
            EXPECT_EQ(keeper->moves.size(),
                      std::min({legal, static_cast<std::size_t>(lines), std::size_t{MaxLines}}));
            EXPECT_EQ(best, keeper->moves[0]);
            EXPECT_EQ(theSearcher.iterationScore, keeper->scores[0]);
            EXPECT_EQ(keeper->iterations, (std::vector{1, 2, 3, 4})) << fen;
            EXPECT_EQ(keeper->plainReports, 0);
            EXPECT_EQ(transpositionTable.bestMove(board), best) << "not that of a later line";
            EXPECT_EQ(snapshot(board), before);
        }
    }
}

TEST_F(RequestTest, EachLineIsTheBestOfTheMovesLeft) {
    for (const char* const fen : {"4k3/8/8/3q4/1r6/2N5/P7/4K3 w - - 0 1",
                                  "k7/2q5/8/8/8/1r6/8/K2Q2R1 w - - 0 1", TwoMatesInOne}) {
        setPosition(fen);
        (void)think({.maxIteration = 5, .lines = 3});
        const std::vector<Move> lines = keeper->moves;
        const std::vector<int> scores = keeper->scores;
        std::vector<Move> left = legalMovesOf(board);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            transpositionTable.clear();
            (void)think({.maxIteration = 5, .searchMoves = left});
            EXPECT_NEAR(scores[i], theSearcher.iterationScore, 60) << fen << " line " << i + 1;
            std::erase(left, lines[i]);
        }
    }
}

TEST_F(RequestTest, StoppedLinesKeepTheirOrder) {
    setPosition(Middle);
    for (std::uint32_t nodes = 50; nodes < 60000; nodes += nodes / 3) {
        transpositionTable.clear();
        const Move best = think({.nodeLimit = nodes, .lines = 4});
        ASSERT_EQ(keeper->moves.size(), 4U);
        EXPECT_EQ(best, keeper->moves[0]) << nodes;
        EXPECT_EQ(theSearcher.iterationScore, keeper->scores[0]) << nodes;
        EXPECT_TRUE(isLegalMove(board, best));
    }
}

TEST_F(RequestTest, SeveralLinesEndTheGameAsOneDoes) {
    setPosition(MateInOne);
    EXPECT_EQ(think({.maxIteration = 6, .lines = 4}), move("a1a8"));
    EXPECT_EQ(keeper->scores[0], MateScore - 2);
    EXPECT_EQ(theSearcher.gameOutcome, GameOutcome::WhiteMates);
    EXPECT_EQ(keeper->iterations.back(), 6) << "a mate in the first line is not the end";

    setPosition("4k3/8/8/8/8/8/4N3/4K3 w - - 0 1");
    EXPECT_EQ(think({.maxIteration = 6, .lines = 4}), NoMove);
    EXPECT_EQ(theSearcher.gameOutcome, GameOutcome::InsufficientMaterial);
    EXPECT_TRUE(keeper->moves.empty());

    setPosition(Middle);
    (void)think({.maxIteration = 6, .lines = 4});
    ASSERT_NE(theSearcher.ponderMove, NoMove);
    board.makeMove(keeper->moves[0]);
    EXPECT_TRUE(isLegalMove(board, theSearcher.ponderMove));
}

TEST_F(RequestTest, SearchMoves) {
    for (const char* const fen : {Middle, Checked}) {
        setPosition(fen);
        const std::vector<Move> legal = legalMovesOf(board);
        for (std::size_t i = 0; i + 3 <= legal.size(); i += 3) {
            const std::span choice(legal.data() + i, 3);
            const Move best = think({.maxIteration = 3, .searchMoves = choice});
            EXPECT_NE(std::ranges::find(choice, best), choice.end()) << fen;
            EXPECT_EQ(keeper->rootMoves, 3);
            (void)think({.maxIteration = 3, .searchMoves = choice, .lines = 5});
            EXPECT_TRUE(std::ranges::is_permutation(keeper->moves, choice)) << fen;
        }
        EXPECT_EQ(think({.searchMoves = std::span(legal).last(1)}), legal.back());
        EXPECT_EQ(searchStats.nodes, 0U);
    }
}

TEST_F(RequestTest, OnlyMove) {
    setPosition(OnlyMove);
    const Move only = move("a1b2");
    EXPECT_EQ(think({.maxIteration = 4}), only);
    EXPECT_EQ(keeper->plainReports, 0);
    EXPECT_EQ(think({.maxIteration = 4, .searchesOnlyMove = true}), only);
    EXPECT_GE(keeper->plainReports, 4);
    (void)think({.maxIteration = 4, .lines = 3, .searchesOnlyMove = true});
    EXPECT_EQ(keeper->moves, std::vector{only});
}

TEST_F(RequestTest, MateInSoManyMoves) {
    static constexpr int All = 6;
    const auto iterations = [this](int mateIn, int lines = 1) {
        transpositionTable.clear();
        (void)think({.maxIteration = All, .lines = lines, .mateIn = mateIn});
        return std::min(theSearcher.iteration, All);
    };
    setPosition(MateInFour);
    for (const int mateIn : {0, 3}) EXPECT_EQ(iterations(mateIn), All);
    for (const int mateIn : {4, 5, INT_MAX}) {
        EXPECT_LT(iterations(mateIn), All) << mateIn;
        EXPECT_EQ(theSearcher.iterationScore, MateScore - 8);
    }
    EXPECT_LT(iterations(4, 3), All);
    setPosition(Middle);
    EXPECT_EQ(iterations(INT_MAX), All) << "no other score is a mate";
}

TEST_F(RequestTest, FallbackMove) {
    setPosition("4r2k/8/8/8/8/8/3PN3/4K3 w - - 0 1");
    const std::vector<Move> legal = legalMovesOf(board);
    const auto know = [this](Move stored) {
        transpositionTable.store(board.hashKey, 1, 0, BoundExact, stored, false, 16);
    };
    const auto fallback = [this](std::span<const Move> searchMoves = {}) {
        return fallbackMove(board, transpositionTable, searchMoves);
    };
    EXPECT_EQ(fallback(), legal[0]);
    know(legal[2]);
    EXPECT_EQ(fallback(), legal[2]);
    EXPECT_EQ(fallback(std::span(legal).subspan(1, 1)), legal[1]);
    know(move("e2c3"));
    EXPECT_EQ(fallback(), legal[0]) << "the knight is pinned";
    setPosition("7k/6Q1/6K1/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(fallback(), NoMove);
}

TEST_F(RequestTest, NothingReachesTheNextSearch) {
    setPosition(TwoMatesInOne);
    const Move mate = think({.maxIteration = 6});
    EXPECT_TRUE(board.isMoveValid(mate));
    SearchListener silent;
    EXPECT_EQ(theSearcher.think({.maxIteration = 6}, silent), NoMove) << "the game is over";
    EXPECT_EQ(think({.maxIteration = 6, .nodeLimit = 7}), mate);
    theSearcher.forgetGame();
    EXPECT_EQ(theSearcher.standingRequest().maxIteration, NoFixedDepth);
    EXPECT_EQ(theSearcher.standingRequest().nodeLimit, 0U);
}

/// Stands for a search of hours: each poll finds three billion nodes more.
class ManyNodes : public SearchListener {
public:
    static constexpr std::uint32_t More = 3'000'000'000;
    static constexpr int Polls = 4;

    bool pollInput() override {
        searchStats.nodes += More;
        searchStats.nextPoll += More;
        theSearcher.stopSearch = ++polls == Polls;
        return true;
    }

private:
    int polls = 0;
};

TEST_F(RequestTest, CountsNodesBeyondTheEndOfTheCounter) {
    setPosition(Middle);
    ManyNodes listener;
    (void)theSearcher.think({.maxIteration = 30}, listener);
    theSearcher.searchMode = SearchMode::Idle;
    const std::uint64_t added = std::uint64_t{ManyNodes::More} * ManyNodes::Polls;
    EXPECT_GE(theSearcher.progress().nodes, added);
    EXPECT_LT(theSearcher.progress().nodes, added + ManyNodes::More);
    EXPECT_EQ(static_cast<std::uint32_t>(theSearcher.progress().nodes), searchStats.nodes);
}

/// Turns a ponder search into one for a move, then stops it.
class PonderHit : public SearchListener {
public:
    void onIteration(const SearchProgress& progress, int /*score*/,
                     SearchEvent /*event*/) override {
        if (progress.mode == SearchMode::Pondering) theSearcher.takePonderHit();
        theSearcher.stopSearch = true;
    }
};

TEST_F(RequestTest, PonderHitOnTheLastMoveBeforeTheControl) {
    setPosition(Middle);
    const auto budget = [](bool keepsGame) {
        TimeControl clock;
        clock.setConventional(1, 1);
        clock.movesLeft = 1;
        clock.ownTime = 20;
        PonderHit listener;
        (void)theSearcher.think(
            {.mode = SearchMode::Pondering, .clock = clock, .keepsGame = keepsGame}, listener);
        EXPECT_EQ(theSearcher.searchMode, SearchMode::Thinking);
        theSearcher.searchMode = SearchMode::Idle;
        return timeControl.allocated;
    };
    EXPECT_EQ(budget(false), 15U) << "some is kept in reserve";
    EXPECT_EQ(budget(true), 18U);
}

}  // namespace
}  // namespace brivok
