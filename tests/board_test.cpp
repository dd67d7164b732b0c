#include "board/board.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "board/coordinate.h"
#include "board/random_keys.h"
#include "engine_fixture.h"
#include "movegen/generate.h"
#include "movegen/move_text.h"
#include "movegen/perft.h"
#include "search/searcher.h"
#include "search/time_control.h"

namespace brivok {
namespace {

constexpr std::uint64_t StartHashKey = 0xD5FB27437EB87C7F;

/// The squares named in the text, two characters each.
Bitboard squareSet(const std::string& names) {
    Bitboard set = 0;
    for (std::size_t i = 0; i + 1 < names.size(); i += 3) {
        set |= bit[static_cast<std::size_t>(squareAt(names[i] - 'a', '8' - names[i + 1]))];
    }
    return set;
}

TEST(Bitboards, ScansAndCounts) {
    EXPECT_EQ(lastBit(bit[5] | bit[40]), 5);
    EXPECT_EQ(firstBit(bit[5] | bit[40]), 5);
    EXPECT_EQ(lastBit(bit[33] | bit[40]), 40);
    for (unsigned sq = 0; sq < Squares; ++sq) {
        EXPECT_EQ(firstBit(bit[sq]), static_cast<Square>(sq));
        EXPECT_EQ(lastBit(bit[sq]), static_cast<Square>(sq));
    }
    EXPECT_EQ(popCount(0), 0);
    EXPECT_EQ(popCount(~Bitboard{0}), 64);
    Bitboard all = ~Bitboard{0};
    std::vector<Square> walk;
    while (all != 0) walk.push_back(takeNext<Black>(all));
    EXPECT_EQ(walk.front(), squareNamed("h5"));
    EXPECT_EQ(walk[31], squareNamed("a8"));
    EXPECT_EQ(walk[32], squareNamed("h1"));
    EXPECT_EQ(walk.back(), squareNamed("a4"));
}

class BoardTest : public EngineTest {
protected:
    std::string fenErrors(const std::string& fen, Variant variant = Variant::Normal) {
        ::testing::internal::CaptureStdout();
        setPosition(fen, variant);
        return ::testing::internal::GetCapturedStdout();
    }
};

TEST_F(BoardTest, RandomKeysBelongToTheBookFormat) {
    RandomKeys random(9);
    EXPECT_EQ(random.nextRandom(), 0x32AC631BCE739DEEU);
    EXPECT_EQ(random.nextRandom(), 0xF765EF7BF739D406U);
    EXPECT_EQ(board.epKeys[0], 0x98366CCF9258EB3BU);
    EXPECT_EQ(board.castleKeys[0], 0x7AC369072AA31CB2U);
    EXPECT_EQ(board.castleKeys[15], 0xB3E2A70BCAC9DDFBU);
    EXPECT_EQ(board.hashKey, StartHashKey);
    EXPECT_EQ(board.pawnKey, 0x9F7E980E141055E4U);
}

TEST_F(BoardTest, StaticTables) {
    const Square a1 = squareNamed("a1");
    EXPECT_EQ(rankAttacks[a1][0], squareSet("b1 c1 d1 e1 f1 g1 h1"));
    EXPECT_EQ(fileAttacks[a1][0], squareSet("a2 a3 a4 a5 a6 a7 a8"));
    EXPECT_EQ(rookEmptyAttacks[a1], rankAttacks[a1][0] | fileAttacks[a1][0]);
    EXPECT_EQ(rankMoveCount[a1][1], 1);
    EXPECT_EQ(between[a1][squareNamed("h8")], squareSet("b2 c3 d4 e5 f6 g7"));
    EXPECT_EQ(between[a1][squareNamed("b3")] + direction[a1][squareNamed("b3")], 0U);
    EXPECT_EQ(direction[squareNamed("e4")][squareNamed("e5")], 8U);
    EXPECT_EQ(direction[squareNamed("e5")][squareNamed("e4")], 4U);
    EXPECT_EQ(outpostGuardMask[White][squareNamed("a2")], squareSet("b3 b4 b5 b6 b7 b8"));
    EXPECT_EQ(outpostGuardMask[Black][squareNamed("d3")], squareSet("c2 c1 e2 e1"));
    const unsigned shifts[8] = {0, 1, 3, 6, 10, 15, 21, 28};
    for (int file = 0; file < 8; ++file) {
        EXPECT_EQ(diagNEShift[file], shifts[file]);
        EXPECT_EQ(diagSEShift[7 - file], shifts[file]);
    }
}

TEST_F(BoardTest, CastlingTables) {
    EXPECT_EQ(board.castles.castleEmpty[WhiteQueenSide], squareSet("b1 c1 d1"));
    EXPECT_EQ(board.castles.castleTransit[BlackQueenSide], squareSet("c8 d8"));
    setPosition("4k3/8/8/8/8/8/8/RK5R w KQ - 0 1", Variant::Fischerandom);
    EXPECT_EQ(board.castles.castleEmpty[WhiteKingSide], squareSet("c1 d1 e1 f1 g1"));
    EXPECT_EQ(board.castles.castleTransit[WhiteKingSide], squareSet("c1 d1 e1 f1 g1"));
    EXPECT_EQ(board.castles.castleEmpty[WhiteQueenSide], squareSet("c1 d1"));
    EXPECT_EQ(board.castles.castleTransit[WhiteQueenSide], squareSet("c1"));
    EXPECT_EQ(board.castles.castleEmpty[BlackKingSide] | board.castles.castleXor[BlackKingSide], 0U)
        << "no rook";
    setPosition("4k3/8/8/8/8/8/8/R5KR w KQ - 0 1", Variant::Fischerandom);
    EXPECT_EQ(board.castles.castleEmpty[WhiteKingSide], squareSet("f1"));
    EXPECT_EQ(board.castles.castleTransit[WhiteKingSide], 0U);
    EXPECT_EQ(board.castles.castleEmpty[WhiteQueenSide], squareSet("b1 c1 d1 e1 f1"));
    setPosition("4k3/8/8/8/8/8/8/2RK2R1 w KQ - 0 1", Variant::Fischerandom);
    EXPECT_EQ(board.castles.castleEmpty[WhiteQueenSide] | board.castles.castleXor[WhiteQueenSide],
              0U)
        << "they swap";
    board.NewGame();
    EXPECT_EQ(board.castles.castleRightsMask[squareNamed("e1")], 192U);
    EXPECT_EQ(board.castles.castleRightsMask[squareNamed("a8")], 112U);
}

TEST_F(BoardTest, NewGameForgetsEverything) {
    setPosition("4k3/8/8/8/8/8/8/4K3 b - e3 9 30");
    EXPECT_EQ(board.bookGate, FullBookGate);
    settings.variant = Variant::NoCastle;
    theSearcher.gameOutcome = GameOutcome::Repetition;
    timeControl = TimeControl{};
    board.NewGame();
    EXPECT_EQ(theSearcher.gameOutcome, GameOutcome::None);
    EXPECT_EQ(timeControl.ownTime, 30000U);
    EXPECT_EQ(board.castling, 0U);
    EXPECT_EQ(board.hashKey ^ StartHashKey, board.castleKeys[0] ^ board.castleKeys[15]);
    EXPECT_EQ(board.sideToMove, White);
    EXPECT_EQ(board.epSquare, NoSquare);
    EXPECT_EQ(board.ply + board.fiftyCount + board.bookGate, 0U);
    EXPECT_EQ(board.totalMen(), 32);
    for (const int i : {0, 1}) {
        EXPECT_EQ(board.material[i], 3900);
        EXPECT_EQ(board.phaseCount[i], 31);
        EXPECT_EQ(board.pawnCount[i] + board.pieceCount[i], 16);
    }
    const std::string start = snapshot(board);
    board.unmakeMove();
    EXPECT_TRUE(snapshot(board) == start) << "nothing to take back";
}

TEST_F(BoardTest, FenFields) {
    const std::string bare = "4k3/8/8/8/8/8/8/4K3";
    const std::string rooks = "r3k2r/8/8/8/8/8/8/R3K2R";
    const std::string frc = "1rkr4/pppppppp/8/8/8/8/PPPPPPPP/1RKR4 w KQkq - 0 1";
    const struct {
        std::string fen;
        Variant variant;
        std::uint32_t fifty, ply;
        int ep;
        std::uint32_t castling;
    } cases[] = {
        {bare + " w - - 5 20", Variant::Normal, 5, 38, NoSquare, 0},
        {bare + " b - - 5 20", Variant::Normal, 5, 39, NoSquare, 0},
        {bare + " b - e3 0 0", Variant::Normal, 0, 1, 44, 0},
        {bare + " w - - 12 34", Variant::Normal, 12, 66, NoSquare, 0},
        {bare + " w - - 101 1", Variant::Normal, 0, 0, NoSquare, 0},
        {bare + " w - - 100 1024", Variant::Normal, 100, 0, NoSquare, 0},
        {bare + " w - - -3 -3", Variant::Normal, 0, 0, NoSquare, 0},
        {bare + " b - - bm e8d8; id \"7 7\";", Variant::Normal, 0, 1, NoSquare, 0},
        {"   " + bare + "    w", Variant::Normal, 0, 0, NoSquare, 0},
        {bare, Variant::Normal, 0, 0, NoSquare, 0},
        {bare + " b\n", Variant::Normal, 0, 1, NoSquare, 0},
        {rooks + " w KQkq - 0 1", Variant::Normal, 0, 0, NoSquare, 240},
        {rooks + " w xQ-k - 0 1", Variant::Normal, 0, 0, NoSquare, 96},
        {rooks + " KQkq - 7 3", Variant::Normal, 7, 4, NoSquare, 240},  // no side to move
        {bare + " w KQkq - 0 1", Variant::NoCastle, 0, 0, NoSquare, 0},
        {frc, Variant::Fischerandom, 0, 0, NoSquare, 240},
    };
    for (const auto& [fen, variant, fifty, ply, ep, castling] : cases) {
        EXPECT_EQ(fenErrors(fen, variant), "") << fen;
        EXPECT_EQ(board.fiftyCount, fifty) << fen;
        EXPECT_EQ(board.gamePly(), ply) << fen;
        EXPECT_EQ(board.epSquare, ep) << fen;
        EXPECT_EQ(board.castling, castling) << fen;
        EXPECT_EQ(board.sideToMove, ply % 2 == 0 ? White : Black) << fen;
        EXPECT_EQ(board.undo[0].hashKey, board.hashKey) << fen;
        expectConsistent(board);
    }
    EXPECT_EQ(board.kingStart[0], 58);
    EXPECT_EQ(board.whiteRookStart[0], 57);
    EXPECT_EQ(board.blackRookStart[1], 3);
    setPosition("4k3/8/8/8/8/8/8/RRK1R2R w KQ - 0 1", Variant::Fischerandom);
    EXPECT_EQ(board.whiteRookStart[0], squareNamed("b1")) << "the nearest on the left";
    EXPECT_EQ(board.whiteRookStart[1], squareNamed("h1")) << "the farthest on the right";
}

TEST_F(BoardTest, FenErrorsLeaveTheStartPosition) {
    const std::string e = "FEN error: ";
    const std::string many = e + "total pieces and pawns per side must be < 16\n";
    const struct {
        const char* fen;
        std::string messages;
    } cases[] = {
        {"8/8/8/8 w - - 0 1", e + "There isn't white king\n" + e + "There isn't black king\n"},
        {"4k3/8/8/8/8/8/8/8 b - - 0 1", e + "There isn't white king\n"},
        {"P3k2P/8/8/8/8/8/8/pP2K3 w - - 0 1",
         e + "There is a white pawn at rank 8\n" + e + "There is a white pawn at rank 8\n" + e +
             "There is a white pawn at rank 1\n" + e + "There is a black pawn at rank 1\n"},
        {"4k3/8/8/8/8/QQQQQQQQ/QQQQQQQQ/4K3 w - - 0 1", many},
        {"4k3/nnnnnnnn/nnnnnnnn/8/8/QQQQQQQQ/QQQQQQQQ/4K3 w - - 0 1", many + many},
        {"4k3/8/8/8/8/8/8/R3K3 w KQ - 0 1",
         e + "WCK flag is set, but there isn't white kingside rook\n"},
        {"4k3/8/8/8/8/8/8/4K3 w qkQK - 0 1",
         e + "WCK flag is set, but there isn't white kingside rook\n" + e +
             "BCK flag is set, but there isn't black kingside rook\n" + e +
             "WCQ flag is set, but there isn't white queenside rook\n" + e +
             "BCQ flag is set, but there isn't black queenside rook\n"},
        {"r6r/4k3/8/8/8/8/8/4K3 b kq - 0 1",
         e + "BCK flag is set, but there isn't black kingside rook\n" + e +
             "BCQ flag is set, but there isn't black queenside rook\n"},
    };
    for (const auto& [fen, messages] : cases) {
        EXPECT_EQ(fenErrors(fen), messages) << fen;
        EXPECT_EQ(board.hashKey, StartHashKey) << fen;
        EXPECT_EQ(board.bookGate, FullBookGate) << fen;
    }
}

TEST_F(BoardTest, HostileFensLeaveAUsablePosition) {
    const std::string bare = "4k3/8/8/8/8/8/8/4K3";
    const std::string texts[] = {
        "",
        "      ",
        "\n",
        std::string(500, 'q') + " w KQkq - 0 1",
        bare + std::string(300, 'k'),
        "99999999/4k3/8/4K3 w - - 0 1",
        "kK" + std::string(100000, '8') + "Q",
        bare + " b - z9 0 1",
        bare + " w - e",
        bare + " w - e0 0 1",
        bare + " b - \xFF\xFE 0 1",
        bare + " w - - 99999999999999999999999 99999999999999999999999",
        bare + " w - - -99999999999999999999999 4294967297",
        bare + " w - - 0x10 1e3",
        "\x80\xFF" + bare + "\t w",
        "4k3/8/8/8/8/8/3P4/4K3 w - e3 0 1",  // no pawn to capture en passant
        "4k3/8/8/8/8/8/3P4/4K3 w - c8 0 1",
        "kk6/8/8/8/8/8/8/KK6 w - - 0 1",
        "K1k5/8/8/8/8/8/8/8 w - - 0 1023",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 80));
        (void)fenErrors(text);
        EXPECT_LE(board.epSquare, NoSquare);
        EXPECT_LE(board.fiftyCount, 100U);
        EXPECT_EQ(board.ply % 2, board.sideToMove == White ? 0U : 1U);
        const std::string before = snapshot(board);
        (void)countPerft(board, 2);
        EXPECT_TRUE(snapshot(board) == before);
    }
}

TEST_F(BoardTest, FullMoveNumberLeavesRoomForTheSearch) {
    for (const char* const side : {"w", "b"}) {
        for (const int number : {300, 384, 385, 400, 512, 1000, 1023}) {
            setPosition("4k3/8/8/8/8/8/8/4K3 " + std::string(side) + " - - 50 " +
                        std::to_string(number));
            EXPECT_LE(board.ply + UndoReserve, static_cast<std::uint32_t>(UndoRecords)) << number;
            EXPECT_EQ(board.ply % 2, board.sideToMove == White ? 0U : 1U) << number;
            EXPECT_EQ(board.gamePly(), static_cast<unsigned>(2 * number - 2) + board.ply % 2);
            EXPECT_EQ(board.fiftyCount, 50U);
            EXPECT_EQ(board.countRepetitions(0).inGame, 1);
        }
    }
}

TEST_F(BoardTest, GamesMayBeLongerThanTheUndoStack) {
    const char* const shuffle[4] = {"g1f3", "g8f6", "f3g1", "f6g8"};
    for (int i = 0; i < 3000; ++i) {
        ASSERT_TRUE(playMoves(board, shuffle[i % 4]));
        ASSERT_LE(board.ply + UndoReserve, static_cast<std::uint32_t>(UndoRecords));
        ASSERT_EQ(board.gamePly(), static_cast<std::uint32_t>(i + 1));
        ASSERT_GE(board.countRepetitions(0).inGame, i < 8 ? 1 : 3);
    }
    EXPECT_EQ(board.hashKey, StartHashKey);
    for (int i = 0; i < 3000; ++i) board.unmakeMove();
    EXPECT_EQ(board.ply, 0U);
    expectConsistent(board);
}

TEST_F(BoardTest, EnPassantSquareNeedsAReadyPawn) {
    ASSERT_TRUE(playMoves(board, "e2e4"));
    EXPECT_EQ(board.epSquare, NoSquare);
    ASSERT_TRUE(playMoves(board, "a7a6 e4e5 d7d5"));
    EXPECT_EQ(board.epSquare, squareNamed("d6"));
    setPosition("4k3/8/8/7p/8/7p/P7/4K3 w - - 0 1");  // h5 and h3 have the numbers next to a4's
    ASSERT_TRUE(playMoves(board, "a2a4"));
    EXPECT_EQ(board.epSquare, NoSquare);
}

TEST_F(BoardTest, FischerandomCastlingWithOverlappingSquares) {
    const struct {
        const char *fen, *move, *king, *rook;
        bool clearsFifty;
    } cases[] = {
        {"4k3/8/8/8/8/8/8/RK6 w Q - 9 20", "O-O-O", "c1", "d1", false},
        {"4k3/8/8/8/8/8/8/6KR w K - 9 20", "O-O", "g1", "f1", true},  // the king stays
        {"4k3/8/8/8/8/8/8/5RK1 w Q - 9 20", "O-O-O", "c1", "d1", false},
        {"4k3/8/8/8/8/8/8/4KR2 w K - 9 20", "O-O", "g1", "f1", false},  // the rook stays
        {"4k3/8/8/8/8/8/8/5KR1 w K - 9 20", "O-O", "g1", "f1", true},   // they swap
        {"5kr1/8/8/8/8/8/8/4K3 b k - 9 20", "O-O", "g8", "f8", true},
    };
    for (const auto& [fen, move, king, rook, clearsFifty] : cases) {
        SCOPED_TRACE(fen);
        setPosition(fen, Variant::Fischerandom);
        const std::string before = snapshot(board);
        const unsigned i = whiteFirst(board.sideToMove);
        ASSERT_TRUE(playMoves(board, move));
        EXPECT_EQ(squareName(board.kingSquare[i]), king);
        EXPECT_EQ(board.pieces[WhiteRook + i], squareSet(rook));
        EXPECT_EQ(board.colourOcc[i], squareSet(std::string(king) + " " + rook));
        EXPECT_EQ(board.fiftyCount, clearsFifty ? 0U : 10U);
        EXPECT_EQ(board.castling, (move[3] == '-' ? 2U : 1U) << (2 * i)) << "just castled";
        expectConsistent(board);
        board.unmakeMove();
        EXPECT_TRUE(snapshot(board) == before);
    }
}

TEST_F(BoardTest, ExchangeValues) {
    const struct {
        const char *fen, *move;
        int value;
    } cases[] = {
        {"4k3/8/4p3/3q4/4P3/8/8/4K3 w - - 0 1", "e4d5", 800},
        {"4k3/8/4p3/3p4/8/4N3/8/4K3 w - - 0 1", "e3d5", -200},
        {"4k3/8/4p3/3p4/3K4/8/8/8 w - - 0 1", "d4d5", -49900},
        {"4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1", "e4d5", 900},
        {"3rk3/3r4/8/3p4/8/8/3R4/3RK3 w - - 0 1", "d2d5", -400},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", 0},
        {"4k3/2p5/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", -100},
        {"4r1k1/P7/8/8/8/8/8/7K w - - 0 1", "a7a8q", -100},
        {"r5k1/1P6/8/8/8/8/8/4K3 w - - 0 1", "b7a8q", 1300},
    };
    for (const auto& [fen, text, value] : cases) {
        setPosition(fen);
        MoveList list;
        generateMoves(board, list);
        const Move move = moveNamed(board, text);
        ASSERT_NE(move, NoMove) << fen;
        EXPECT_EQ(board.see(Black, moveTo(move), moveFrom(move), movePromotion(move)), value)
            << fen;
    }
}

TEST_F(BoardTest, ChecksAndPins) {
    setPosition("4k3/8/8/r1N1K3/3B4/4P3/8/b3r3 w - - 0 1");
    EXPECT_TRUE(board.isPinnedWhite(squareNamed("c5")));
    EXPECT_TRUE(board.isPinnedWhite(squareNamed("d4")));
    EXPECT_TRUE(board.isPinnedWhite(squareNamed("e3")));
    setPosition("4k3/8/8/r1NPK3/8/3B4/2P5/7b w - - 0 1");
    EXPECT_FALSE(board.isPinnedWhite(squareNamed("c5"))) << "a second man shields";
    EXPECT_FALSE(board.isPinnedWhite(squareNamed("d3"))) << "no line";
    for (const char* const fen : {"8/8/8/3kK3/8/8/8/8 w - -", "8/8/8/3kK3/8/8/8/8 b - -"}) {
        setPosition(fen);
        EXPECT_TRUE(board.inCheck() && board.moverInCheck()) << fen;
    }
}

/// Visits words that a table entry could hold for this position: all combinations of squares and
/// flags with plausible moving and captured men.
template <class Visit>
void forEachWord(const Board& board, Visit visit) {
    for (Square from = 0; from < Squares; ++from) {
        const Piece piece = board.squares[from];
        for (Square to = 0; to < Squares; ++to) {
            const std::set<Piece> captures{board.squares[to], Empty, WhitePawn, BlackPawn};
            for (const Piece captured : captures) {
                const Move plain = makePlainMove(from, to, piece, captured);
                for (std::uint32_t upper = 0; upper < 256; ++upper) visit(plain | upper << 20U);
                visit(plain | 1U << (28 + to % 4));
                visit(plain ^ field::Pieza.put(1));
            }
        }
    }
}

TEST_F(BoardTest, ValidMovesAreThePseudoLegalOnes) {
    const struct {
        const char* fen;
        Variant variant;
    } cases[] = {
        {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", Variant::Normal},
        {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1pP1P3/2N2Q1p/PP1BBPPP/R3K2R b KQkq c3 0 1", Variant::Normal},
        {"r3k3/1P5P/8/2pP4/8/8/8/R3K2R w KQq c6 0 2", Variant::Normal},
        {"r3k2r/8/8/8/8/8/1p5p/1N2K3 b kq - 0 2", Variant::Normal},
        {"1k5r/8/8/8/8/8/8/1K5R w Kk - 0 1", Variant::Normal},  // homes do not fit
        {"1r2k1r1/p4p2/8/2b5/2B5/8/P4P2/1R2K1R1 w KQkq - 0 15", Variant::Fischerandom},
        {"r5kr/8/8/8/8/8/8/R5KR b KQkq - 4 11", Variant::Fischerandom},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", Variant::NoCastle},
    };
    for (const auto& [fen, variant] : cases) {
        SCOPED_TRACE(fen);
        setPosition(fen, variant);
        ASSERT_FALSE(board.inCheck());
        std::set<Move> expected;
        for (const Move move : generatedMoves(board)) {
            expected.insert(move);
            // Evasions do not mark double pushes.
            expected.insert(move & ~field::MovDobleP.put(1));
        }
        std::set<Move> valid;
        forEachWord(board, [&](Move move) {
            if (board.isMoveValid(move)) valid.insert(move);
        });
        EXPECT_EQ(valid.size(), expected.size());
        for (const Move move : valid) {
            EXPECT_TRUE(expected.contains(move)) << moveToCoordinate(move) << " " << move;
        }
        for (const Move move : expected) {
            EXPECT_TRUE(valid.contains(move)) << moveToCoordinate(move) << " " << move;
        }
    }
}

}  // namespace
}  // namespace brivok
