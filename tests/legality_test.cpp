#include "movegen/legality.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "movegen/generate.h"
#include "movegen/perft.h"

namespace brivok {
namespace {

class LegalityTest : public EngineTest {
protected:
    std::size_t below(std::size_t limit) { return random() % limit; }

    /// Men anywhere, one or two kings a side, any en passant square: the side not to move may be in
    /// check, and the kings may stand side by side.
    std::string oddPosition() {
        std::string squares(64, '1');
        const auto place = [&](char letter, std::size_t first, std::size_t count) {
            for (std::size_t tries = 0; tries < 100; ++tries) {
                char& square = squares[first + below(count)];
                if (square != '1') continue;
                square = letter;
                return;
            }
        };
        for (std::size_t i = 1 + below(8) / 7; i > 0; --i) place('K', 56, below(2) == 0 ? 8 : 1);
        for (std::size_t i = 1 + below(8) / 7; i > 0; --i) place('k', 0, below(2) == 0 ? 8 : 64);
        for (std::size_t men = below(16); men > 0; --men) {
            const char letter = "PpPpNnBbRrQqRr"[below(14)];
            const bool pawn = letter == 'P' || letter == 'p';
            place(letter, pawn ? 8 : 0, pawn ? 48 : 64);
        }
        std::string fen;
        for (std::size_t row = 0; row < 8; ++row) fen += squares.substr(8 * row, 8) + '/';
        fen += below(2) == 0 ? " w - " : " b - ";
        return fen + "abcdefgh"[below(8)] + (below(2) == 0 ? '3' : '6') + " 0 1";
    }

    /// All rights that have a king and a rook.
    void giveRights() {
        std::uint32_t rights = 0;
        for (const int side : {0, 1}) {
            const auto& rooks = side == 0 ? board.whiteRookStart : board.blackRookStart;
            if (rooks[1] != MissingHome) rights |= rightOf(2 * side);
            if (rooks[0] != MissingHome) rights |= rightOf(2 * side + 1);
        }
        board.setCastling(board.castlingHomes(), rights);
    }

    /// Compares every pseudo-legal move, then plays one of those that leave the king safe.
    bool checkAndPlay() {
        const Legality legality(board);
        MoveList list;
        generateMoves(board, list);
        const int count = board.moveCount;
        Move played = NoMove;
        int safe = 0;
        for (int i = 0; i < count; ++i) {
            const bool allowed = legality.known() && legality.allows(list[i]);
            board.makeMove(list[i]);
            const bool legal = !board.moverInCheck();
            board.unmakeMove();
            if (legality.known()) {
                EXPECT_EQ(allowed, legal) << moveToCoordinate(list[i]);
                ++compared;
                refused += legal ? 0 : 1;
            }
            if (legal && below(static_cast<std::size_t>(++safe)) == 0) played = list[i];
        }
        if (!legality.known()) ++unknown;
        if (played != NoMove) board.makeMove(played);
        return played != NoMove;
    }

    std::mt19937_64 random;
    std::uint64_t compared = 0;
    std::uint64_t refused = 0;
    std::uint64_t unknown = 0;
};

TEST_F(LegalityTest, AgreesWithMakingInOddPositions) {
    const std::uint64_t positions =
        fromEnvironment("BRIVOK_RANDOM_POSITIONS", SlowBuild ? 2'000 : 20'000);
    for (std::uint64_t seed = 0; seed < positions && !HasFailure(); ++seed) {
        random.seed(seed);
        const std::string fen = oddPosition();
        SCOPED_TRACE(fen);
        setPosition(fen, below(2) == 0 ? Variant::Normal : Variant::Fischerandom);
        giveRights();
        ASSERT_EQ(countLeaves(board, 2), countPerft(board, 2)[2]);
        for (int ply = 0; ply < 8 && checkAndPlay();) ++ply;
    }
    EXPECT_GT(refused, compared / 10);
    EXPECT_GT(unknown, positions / 20);
}

}  // namespace
}  // namespace brivok
