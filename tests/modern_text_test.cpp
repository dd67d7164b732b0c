#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "shell/modern/interface_moves.h"

namespace brivok {
namespace {

class ModernTextTest : public EngineTest {
protected:
    /// Coordinate text, with castling as O-O in Fischer-random chess, of the move that is read.
    std::string read(std::string_view text) {
        const std::string before = snapshot(board);
        const Move move = readMove(board, text);
        EXPECT_TRUE(snapshot(board) == before) << text;
        return move == NoMove ? "none" : moveToCoordinate(move);
    }
};

constexpr Variant Normal = Variant::Normal;
constexpr Variant Random = Variant::Fischerandom;

TEST_F(ModernTextTest, ReadsMovesAsInterfacesWriteThem) {
    const struct {
        const char* fen;
        Variant variant;
        const char* texts;  // each followed by what is read
    } cases[] = {
        {"r3k2r/pP3p2/8/4pPb1/1p1B4/2p5/P2N1N2/R3K2R w KQkq e6 0 1", Normal,
         "f5e6 f5e6 fxe6 f5e6 fxe6e.p. f5e6 Nfe4 f2e4 N2e4 none Ne4 none e1g1 e1g1 O-O e1g1 0-0 "
         "e1g1 o-o+ e1g1 O-O# e1g1 O-O-O e1c1 0-0-0+ e1c1 o-o-o e1c1 e1c1 e1c1 e1h1 e1g1 e1a1 e1c1 "
         "Kxh1 e1g1 Ke1xa1 e1c1 Ke2 e1e2 e1-e2 e1e2 b7a8q b7a8q b7a8Q b7a8q b7a8=n b7a8n bxa8=R+ "
         "b7a8r bxa8b b7a8b b8=N b7b8n b8n b7b8n b7b8Q+ b7b8q b8 b7b8q b7b8=k none Bxe5 d4e5 bxe5 "
         "none Bxc3 d4c3 bxc3 none O-O- none O-O-O-O none 0000 none e1e1 none e1b1 none d7d5 none "
         "a2 none a8 none e4 none e2e4 none e1h1q none K none e1 none"},
        {"4k3/8/8/8/8/1B6/1P6/2r1K3 w - - 0 1", Normal, "Bc2 none e1g1 none O-O none Kd2 e1d2"},
        {"7k/8/8/8/8/2n5/1P1B4/4K3 w - - 0 1", Normal, "bxc3 b2c3 Bxc3 d2c3 bc3 b2c3 Bc3 d2c3"},
        {"r3k2r/8/8/8/8/8/8/R3K2R b kq - 0 1", Normal, "e8h8 e8g8 e8a8 e8c8 Kxa8 e8c8 e1h1 none"},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", Variant::NoCastle, "e1h1 none O-O none e1c1 none"},
        // The king steps to g1, or castles there
        {"4k3/8/8/8/8/8/8/5K1R w K - 0 1", Random,
         "f1g1 f1g1 Kf1g1 f1g1 Kf1-g1 f1g1 Kg1 f1g1 f1h1 O-O Kxh1 O-O O-O O-O 0-0+ O-O f1h1# O-O"},
        {"4k3/8/8/8/8/8/8/RK6 w Q - 0 1", Random, "b1c1 b1c1 Kc1 b1c1 b1a1 O-O-O O-O-O+ O-O-O"},
        {"4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", Random,
         "e1g1 O-O e1c1 O-O-O e1h1 O-O e1a1 O-O-O e1f1 e1f1 O-O O-O"},
        // The king stays, or the rook does; they swap places
        {"4k3/8/8/8/8/8/8/6KR w K - 0 1", Random, "g1h1 O-O g1g1 none g1f1 g1f1 O-O O-O"},
        {"4k3/8/8/8/8/8/8/4KR2 w K - 0 1", Random, "e1f1 O-O Kxf1 O-O e1g1 O-O e1e2 e1e2"},
        {"4k3/8/8/8/8/8/8/2RK4 w Q - 0 1", Random, "d1c1 O-O-O Kxc1 O-O-O d1e1 d1e1"},
        // No right, a way that is attacked, and check
        {"4k3/8/8/8/8/8/8/5K1R w - - 0 1", Random, "f1h1 none O-O none f1g1 f1g1"},
        {"3rk3/8/8/8/8/8/8/R3K3 w Q - 0 1", Random, "e1a1 none O-O-O none e1c1 none"},
        {"4k3/4r3/8/8/8/8/8/4K2R w K - 0 1", Random, "e1h1 none O-O none e1f1 e1f1"},
    };
    for (const auto& [fen, variant, texts] : cases) {
        setPosition(fen, variant);
        std::istringstream words(texts);
        for (std::string text, move; words >> text >> move;) {
            EXPECT_EQ(read(text), move) << text << " in " << fen;
        }
    }
    EXPECT_EQ(read(""), "none");
}

TEST_F(ModernTextTest, WritesCastlingInTheStyleWanted) {
    const auto written = [this](const char* text, CastlingStyle style) {
        return moveText(board, readMove(board, text), style);
    };
    setPosition("1r2k2r/8/8/8/8/8/P7/1R2K1R1 w KQkq - 0 1", Random);
    EXPECT_EQ(written("O-O", CastlingStyle::KingOntoRook), "e1g1");
    EXPECT_EQ(written("O-O-O", CastlingStyle::KingOntoRook), "e1b1");
    EXPECT_EQ(written("O-O-O", CastlingStyle::Letters), "O-O-O");
    EXPECT_EQ(written("a3", CastlingStyle::KingOntoRook), "a2a3");
    EXPECT_EQ(written("a5", CastlingStyle::KingOntoRook), "0000");
    ASSERT_TRUE(playMoves(board, "a2a3"));
    EXPECT_EQ(written("O-O-O", CastlingStyle::KingOntoRook), "e8b8");
    setPosition("4k3/8/8/8/8/8/8/4K2R w K - 0 1");
    EXPECT_EQ(written("O-O", CastlingStyle::KingOntoRook), "e1g1");
}

}  // namespace
}  // namespace brivok
