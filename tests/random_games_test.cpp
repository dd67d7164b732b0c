#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "movegen/generate.h"
#include "movegen/legal_moves.h"
#include "movegen/legality.h"
#include "movegen/move_text.h"
#include "movegen/san.h"

namespace brivok {
namespace {

constexpr int MaxGameLength = 200;

class RandomGames : public EngineTest, public ::testing::WithParamInterface<Variant> {
protected:
    std::size_t below(std::size_t limit) { return random() % limit; }

    /// A back rank with bishops on both colours and the king between the rooks.
    std::string randomBackRank() {
        std::string rank(8, ' ');
        const auto place = [&](char letter, std::size_t nthFree) {
            for (char& square : rank) {
                if (square == ' ' && nthFree-- == 0) {
                    square = letter;
                    return;
                }
            }
        };
        rank[2 * below(4)] = 'B';
        rank[2 * below(4) + 1] = 'B';
        place('Q', below(6));
        place('N', below(5));
        place('N', below(4));
        for (const char letter : {'R', 'K', 'R'}) place(letter, 0);
        return rank;
    }

    void startGame(Variant variant) {
        settings.variant = variant;
        if (variant != Variant::Fischerandom) return board.NewGame();
        const std::string white = randomBackRank();
        std::string black = white;
        for (char& letter : black) letter = static_cast<char>(letter - 'A' + 'a');
        board.setPositionFromFen(black + "/pppppppp/8/8/8/8/PPPPPPPP/" + white + " w KQkq - 0 1");
        ASSERT_EQ(board.castling, AllRights);
    }

    /// Makes and unmakes every pseudo-legal move of the position; returns the legal ones.
    std::vector<Move> tryAllMoves() {
        MoveList list;
        generateMoves(board, list);
        const std::vector<Move> moves(list, list + board.moveCount);
        const std::string before = snapshot(board);
        const Legality legality(board);
        EXPECT_TRUE(legality.known());
        EXPECT_EQ(legality.inCheck(), board.inCheck());
        std::vector<Move> legal;
        for (const Move move : moves) {
            EXPECT_TRUE(board.isMoveValid(move)) << move;
            const bool allowed = legality.allows(move);
            board.makeMove(move);
            if (!board.moverInCheck()) legal.push_back(move);
            EXPECT_EQ(allowed, !board.moverInCheck()) << moveToCoordinate(move);
            board.unmakeMove();
            if (snapshot(board) != before) {
                ADD_FAILURE() << "not restored: " << moveToCoordinate(move);
                return {};
            }
        }
        return legal;
    }

    void checkAttacks() {
        for (Square sq = 0; sq < Squares; ++sq) {
            const Bitboard attackers = board.attackersTo(sq);
            for (const Side side : {White, Black}) {
                ASSERT_EQ(board.isAttacked(sq, side), (attackers & board.occupiedBy(side)) != 0);
            }
        }
        const Square king = board.kingSquare[whiteFirst(board.sideToMove)];
        ASSERT_EQ(board.inCheck(), board.isAttacked(king, opposite(board.sideToMove)));
    }

    /// The evasions are the legal moves, except for castling out of check and the double push mark.
    void checkEvasions(std::vector<Move> legal) {
        std::vector<Move> evasions = generatedMoves(board);
        std::erase_if(legal, [](Move move) { return moveCastle(move) != NoCastling; });
        for (Move& move : legal) move &= ~field::MovDobleP.put(1);
        std::sort(legal.begin(), legal.end());
        std::sort(evasions.begin(), evasions.end());
        ASSERT_EQ(textOf(evasions), textOf(legal));
        ASSERT_EQ(evasions, legal);
    }

    void checkNullMove() {
        const std::string before = snapshot(board);
        board.makeNullMove();
        tryAllMoves();
        board.unmakeNullMove();
        ASSERT_TRUE(snapshot(board) == before) << "null move";
    }

    void playGame() {
        const std::string start = snapshot(board);
        for (int ply = 0; ply < MaxGameLength; ++ply) {
            SCOPED_TRACE("half-move " + std::to_string(ply));
            expectConsistent(board);
            checkAttacks();
            std::vector<Move> legal = tryAllMoves();
            if (board.inCheck()) {
                checkEvasions(legal);
                legal = generatedMoves(board);
            } else {
                checkNullMove();
            }
            if (HasFailure()) return;
            ASSERT_EQ(countLegalMoves(board), static_cast<int>(legal.size()));
            if (legal.empty()) break;
            const Move move = legal[below(legal.size())];
            ASSERT_EQ(parseMove(board, moveToCoordinate(move)), move);
            ASSERT_NE(moveToSan(board, move), "xxxx");
            board.playGameMove(move);
        }
        while (board.ply > 0) board.unmakeMove();
        ASSERT_TRUE(snapshot(board) == start) << "taking the whole game back";
    }

    std::mt19937_64 random;
};

TEST_P(RandomGames, EveryMoveIsMadeAndTakenBack) {
    const std::uint64_t games = fromEnvironment("BRIVOK_RANDOM_GAMES", SlowBuild ? 30 : 300);
    for (std::uint64_t game = 0; game < games && !HasFailure(); ++game) {
        SCOPED_TRACE("game " + std::to_string(game));
        random.seed(game);
        startGame(GetParam());
        playGame();
    }
}

INSTANTIATE_TEST_SUITE_P(Variants, RandomGames,
                         ::testing::Values(Variant::Normal, Variant::Fischerandom,
                                           Variant::NoCastle));

}  // namespace
}  // namespace brivok
