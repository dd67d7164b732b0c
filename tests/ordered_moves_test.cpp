#include "search/ordered_moves.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "board/piece_values.h"
#include "engine_fixture.h"
#include "movegen/legal_moves.h"

namespace brivok {
namespace {

/// The values of the five kinds of men, within the range of the settings.
using Values = std::array<std::int16_t, 5>;

class OrderedMovesTest : public EngineTest {
protected:
    static void setValues(const Values& values) {
        settings.PawnValue = values[0];
        settings.KnightValue = values[1];
        settings.BishopValue = values[2];
        settings.RookValue = values[3];
        settings.QueenValue = values[4];
        RefreshPieceValues();
    }

    ~OrderedMovesTest() override { setValues({100, 300, 300, 500, 900}); }

    struct Ranked {
        Move move;
        int see;  ///< 0 for a quiet move
        int score;
    };

    /// Scores the list with random history, killers and hash moves. Returns its moves as they are
    /// to be tried.
    std::vector<Ranked> scoreAtRandom(int historyLimit) {
        std::vector<Ranked> ranked;
        list.restart();
        for (int i = 0; i < list.count; ++i) {
            const Move move = list.moves[i];
            int extra = below(3) == 0 ? below(historyLimit) : 0;
            if (below(10) == 0) extra += below(2) == 0 ? 7'000'000 : 128'000'000;
            list.score(board, extra);
            int see = 0;
            if (moveCapture(move) != Empty || movePromotion(move) != Empty) {
                see = board.see(opposite(board.sideToMove), moveTo(move), moveFrom(move),
                                movePromotion(move));
                extra += see >= 0 ? see + OrderedMoves::GoodCapture : see;
            }
            ranked.push_back({move, see, extra});
        }
        std::ranges::stable_sort(ranked, std::greater<>(), &Ranked::score);
        return ranked;
    }

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

    std::mt19937 random{1};
    OrderedMoves list;
};

/// Values and history at the limits of the settings included: there the classes of moves overlap,
/// and a capture can lose material that wins none.
TEST_F(OrderedMovesTest, OrderIsThatOfTheExactScores) {
    constexpr Values AllValues[] = {{100, 300, 300, 500, 900},           {100, 325, 330, 500, 975},
                                    {-2000, -2000, -2000, -2000, -2000}, {2000, -2000, 1, 0, 3},
                                    {-50, 400, -300, 2000, -900},        {0, 0, 0, 0, 0}};
    for (const auto& position : loadJson("positions.json")) {
        const std::string fen = position["fen"];
        for (const Values& values : AllValues) {
            setValues(values);
            setPosition(fen, static_cast<Variant>(position["variant"].get<int>()));
            for (const int historyLimit : {50, 20'000'000, Board::HistoryLimit}) {
                (void)generateForPosition(board, list.moves);
                list.count = board.moveCount;
                for (const Ranked& expected : scoreAtRandom(historyLimit)) {
                    ASSERT_EQ(list.next(board), expected.move) << fen;
                    ASSERT_EQ(list.moves[list.index()], expected.move);
                }
                ASSERT_EQ(list.next(board), NoMove);

                generateCaptures(board, list.moves);
                list.count = board.moveCount;
                std::size_t picked = 0;
                const std::vector<Ranked> captures = scoreAtRandom(historyLimit);
                for (; list.nextReady(board) != NoMove; ++picked) {
                    ASSERT_EQ(list.moves[list.index()], captures[picked].move) << fen;
                    ASSERT_EQ(list.losesMaterial(), captures[picked].see < 0) << fen;
                    ASSERT_EQ(list.see(board), captures[picked].see) << fen;
                }
                ASSERT_EQ(static_cast<std::size_t>(list.left()), captures.size() - picked);
                for (; picked < captures.size(); ++picked) {
                    ASSERT_LT(captures[picked].see, 0) << fen;
                }
            }
        }
    }
}

}  // namespace
}  // namespace brivok
