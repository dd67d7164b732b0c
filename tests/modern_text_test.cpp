#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "board/coordinate.h"
#include "board/strict_fen.h"
#include "engine_fixture.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/words.h"
#include "shell/modern/interface_moves.h"
#include "shell/modern/modern_pv.h"
#include "shell/principal_variation.h"

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

/// What setting up the position says, in a variant.
std::string setUp(const std::string& fen, Variant variant = Normal) {
    settings.variant = variant;
    return setUpPosition(theBoard, fen);
}

std::string castlingHomes(const Board& board) {
    std::string text;
    const CastlingHomes homes = board.castlingHomes();
    for (const auto& [kind, rook] : {std::pair{WhiteKingSide, homes.whiteKingRook},
                                     {WhiteQueenSide, homes.whiteQueenRook},
                                     {BlackKingSide, homes.blackKingRook},
                                     {BlackQueenSide, homes.blackQueenRook}}) {
        if ((board.castling & rightOf(kind)) != 0) text += squareName(rook) + " ";
    }
    return text;
}

TEST_F(ModernTextTest, SetsUpCastlingRights) {
    const struct {
        const char* men;
        const char* rights;
        Variant variant;
        const char* homes;  // of the rooks with rights
    } cases[] = {
        {"r3k2r/8/8/8/8/8/8/R3K2R", "KQkq", Normal, "h1 a1 h8 a8 "},
        {"r3k2r/8/8/8/8/8/8/R3K2R", "HAha", Normal, "h1 a1 h8 a8 "},
        {"r3k2r/8/8/8/8/8/8/R3K2R", "Qk", Normal, "a1 h8 "},
        {"r3k2r/8/8/8/8/8/8/R3K2R", "-", Normal, ""},
        {"r3k2r/8/8/8/8/8/8/R3K2R", "KQkq", Variant::NoCastle, ""},
        {"rr2k1rr/8/8/8/8/8/8/RR2K1RR", "KQkq", Normal, "h1 a1 h8 a8 "},
        // What men or variant do not support
        {"1r2k1r1/8/8/8/8/8/8/R4K1R", "KQkq", Normal, ""},
        {"1r2k1r1/8/8/8/8/8/8/R4K1R", "HAgb", Normal, ""},
        {"4k3/8/8/8/8/8/8/R3K3", "KQkq", Normal, "a1 "},
        {"r3k3/8/8/8/8/8/4K3/R6R", "KQkq", Random, "a8 "},
        {"8/8/8/8/8/8/8/1k4KR", "EAe", Variant::NoCastle, ""},
        // The outermost rook, or the one that is named
        {"rr2k1rr/8/8/8/8/8/8/RR2K1RR", "KQkq", Random, "h1 a1 h8 a8 "},
        {"rr2k1rr/8/8/8/8/8/8/RR2K1RR", "GBgb", Random, "g1 b1 g8 b8 "},
        {"rr2k1rr/8/8/8/8/8/8/RR2K1RR", "GQkb", Random, "g1 a1 h8 b8 "},
        {"rr2k1rr/8/8/8/8/8/8/RR2K1RR", "KHHq", Random, "h1 a8 "},
        {"1rkr4/8/8/8/8/8/8/1RKR3R", "DBdb", Random, "d1 b1 d8 b8 "},
    };
    for (const auto& [men, rights, variant, homes] : cases) {
        EXPECT_EQ(setUp(std::string(men) + " w " + rights + " - 3 40", variant), "");
        EXPECT_EQ(castlingHomes(board), homes) << men << " " << rights;
        EXPECT_EQ(board.gamePly(), 78U);
        expectConsistent(board);
    }
    // The inner rook castles, and the outer one leaves the right alone.
    ASSERT_EQ(setUp("4k3/8/8/8/8/8/8/4K1RR w G -", Random), "");
    EXPECT_EQ(read("e1h1"), "none");
    EXPECT_EQ(read("Rh5"), "h1h5");
    ASSERT_TRUE(playMoves(board, "h1h5 e8d7"));
    EXPECT_EQ(read("e1g1"), "O-O");
}

TEST_F(ModernTextTest, SetsUpWhatThePlainReaderDoes) {
    for (const char* const fen :
         {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
          "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 7 33",
          "4k3/8/8/2pP4/8/8/8/4K3 w - c6 0 900", "4k3/8/8/8/8/8/8/4K3 b - - 100 1023",
          "4k3/8/8/8/8/8/8/4K3 w - -", "4k3/8/8/8/8/8/8/4K3 b", "  4k3/8/8/8/8/8/8/4K3  w -\t\n",
          "4k3/8/8/8/8/8/8/4K3 b - - bm Kd7; id \"1 2\";", "4k3/8/8/8/8/8/8/4K3 w - - 0 0"}) {
        setPosition(fen);
        const std::string plain = snapshot(board);
        board.NewGame();
        EXPECT_EQ(setUp(fen), "") << fen;
        EXPECT_TRUE(snapshot(board) == plain) << fen;
        EXPECT_EQ(board.undo[0].hashKey, board.hashKey);
        EXPECT_EQ(board.bookGate, FullBookGate);
    }
    EXPECT_EQ(setUp("4k3/8/8/8/8/8/8/4K3 w - - 120 90"), "");
    EXPECT_EQ(board.fiftyCount, 100U) << "not a fresh count";
    for (const char* const stale :
         {"4k3/8/8/8/8/8/8/4K3 w - e6 0 1", "4k3/8/8/8/4P3/8/8/4K3 w - e3 0 1",
          "4k3/3p4/8/3p4/8/8/8/4K3 w - d6 0 1"}) {
        EXPECT_EQ(setUp(stale), "") << stale;
        EXPECT_EQ(board.epSquare, NoSquare) << stale;
    }
}

TEST_F(ModernTextTest, FaultsLeaveTheGameAlone) {
    const struct {
        const char* fen;
        const char* fault;
    } cases[] = {
        {"", "the FEN is empty"},
        {" \n", "the FEN is empty"},
        {"4k3/8/8/8/8/8/4K3 w - - 0 1", "there are fewer than eight ranks"},
        {"4k3/8/8/8/8/8/8/8/4K3 w - - 0 1", "there are more than eight ranks"},
        {"4k3/8/8/8/8/8/8/4K3/ w - - 0 1", "there are more than eight ranks"},
        {"4k3/8/8/7/8/8/8/4K3 w - - 0 1", "rank 5 does not have eight squares"},
        {"4k3/8/8/54/8/8/8/4K3 w - - 0 1", "rank 5 does not have eight squares"},
        {"4k3/8/8/8/8/8/8/4K2 w - - 0 1", "rank 1 does not have eight squares"},
        {"4k3/8/8/8/8/8/8/4K2RR w - - 0 1", "rank 1 does not have eight squares"},
        {"4k3/8/8/9/8/8/8/4K3 w - - 0 1", "the men have a letter that is no piece"},
        {"4k3/8/8/7x/8/8/8/4K3 w - - 0 1", "the men have a letter that is no piece"},
        {"4k3/8/8/8/8/8/8/8 w - - 0 1", "White needs one king"},
        {"3kk3/8/8/8/8/8/8/4K3 w - - 0 1", "Black needs one king"},
        {"4k2P/8/8/8/8/8/8/4K3 w - - 0 1", "White has a pawn on a back rank"},
        {"4k3/8/8/8/8/8/8/p3K3 w - - 0 1", "Black has a pawn on a back rank"},
        {"4k3/8/8/8/8/8/8/4K3 x - - 0 1", "the side to move is neither w nor b"},
        {"4k3/8/8/8/8/8/8/4K3", "the side to move is neither w nor b"},
        {"4k3/8/8/8/8/8/8/4K3 white - - 0 1", "the side to move is neither w nor b"},
        {"4k3/8/8/8/8/8/8/4K3 w KX - 0 1",
         "the castling rights are not letters of KQkq or of files"},
        {"4k3/8/8/8/8/8/8/4K3 w K- - 0 1",
         "the castling rights are not letters of KQkq or of files"},
        {"4k3/8/8/8/8/8/8/4K3 w 0 - 0 1",
         "the castling rights are not letters of KQkq or of files"},
        {"4k3/8/8/8/8/8/8/4K2R w Hh - 0 1", "there is no rook for the castling right h"},
        {"4k3/8/8/8/8/8/4K3/7R w H - 0 1", "there is no rook for the castling right H"},
        {"4k3/8/8/8/8/8/8/4K1RR w HG - 0 1", "there are two castling rights on one side"},
        {"4k3/8/8/8/8/8/8/4K3 w - e 0 1", "the en passant field is not a square"},
        {"4k3/8/8/8/8/8/8/4K3 w - i3 0 1", "the en passant field is not a square"},
        {"4k3/8/8/8/8/8/8/4K3 w - - x 1", "the half-move clock is not a number from 0 to 150"},
        {"4k3/8/8/8/8/8/8/4K3 w - - -1 1", "the half-move clock is not a number from 0 to 150"},
        {"4k3/8/8/8/8/8/8/4K3 w - - 151 1", "the half-move clock is not a number from 0 to 150"},
        {"4k3/8/8/8/8/8/8/4K3 w - - 0 99999999999",
         "the move number is not a number from 0 to 9999"},
        {"4k3/8/8/8/8/8/8/4K3 w - - 0 1 x", "there is more behind the move number"},
        {"4k3/8/8/8/8/8/8/4K2r b - - 0 1", "White is in check, but it is not to move"},
        {"8/8/8/8/8/8/3k4/4K3 w - - 0 1", "Black is in check, but it is not to move"},
    };
    setPosition("4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1");
    ASSERT_TRUE(playMoves(board, "e1g1 e8e7"));
    theSearcher.gameOutcome = GameOutcome::Repetition;
    timeControl.ownTime = 4321;
    const std::string before = snapshot(board);
    ::testing::internal::CaptureStdout();
    for (const auto& [fen, fault] : cases) EXPECT_EQ(setUp(fen), fault) << fen;
    EXPECT_EQ(setUp("4k3/8/8/8/8/P7/PPPPPPPP/4K3 w - - 0 1"), "White has more than 8 pawns");
    EXPECT_EQ(setUp("4k3/8/8/8/8/N7/PPPPPPPP/RNBQKBNR w - - 0 1"), "White has more than 16 men");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(snapshot(board) == before);
    EXPECT_EQ(theSearcher.gameOutcome, GameOutcome::Repetition);
    EXPECT_EQ(timeControl.ownTime, 4321U);
    board.unmakeMove();
    board.unmakeMove();
    EXPECT_EQ(read("O-O-O"), "e1c1");
}

/// The 960 back ranks of Fischer-random chess: bishops on squares of both colours, the king between
/// the rooks.
std::vector<std::string> backRanks() {
    std::vector<std::string> ranks;
    std::string rank = "BBKNNQRR";
    do {
        const auto bishop = rank.find('B');
        const auto king = rank.find('K');
        const bool bishopsDiffer = (rank.find('B', bishop + 1) - bishop) % 2 == 1;
        if (bishopsDiffer && rank.find('R') < king && king < rank.rfind('R')) ranks.push_back(rank);
    } while (std::ranges::next_permutation(rank).found);
    return ranks;
}

TEST_F(ModernTextTest, CastlesFromEveryStartPosition) {
    const std::vector<std::string> ranks = backRanks();
    ASSERT_EQ(ranks.size(), 960U);
    for (const std::string& rank : ranks) {
        const int king = static_cast<int>(rank.find('K'));
        const int rooks[2] = {static_cast<int>(rank.rfind('R')), static_cast<int>(rank.find('R'))};
        const std::string letters{static_cast<char>('A' + rooks[0]),
                                  static_cast<char>('A' + rooks[1])};
        const std::string tail = lowerCase(rank) + "/pppppppp/8/8/8/8/PPPPPPPP/" + rank + " w ";
        ASSERT_EQ(setUp(tail + "KQkq - 0 1", Random), "");
        const std::string byWing = snapshot(board);
        ASSERT_EQ(setUp(tail + letters + lowerCase(letters) + " - 0 1", Random), "");
        ASSERT_TRUE(snapshot(board) == byWing) << rank;
        ASSERT_EQ(board.castling, AllRights);

        // Castling is legal once only king and rook stand on the files that they cross.
        std::string cleared = rank;
        for (const char other : {'N', 'B', 'Q', 'N', 'B'}) {
            cleared[cleared.find(other)] = '1';
            for (const bool black : {false, true}) {
                const std::string back = black ? lowerCase(cleared) : cleared;
                ASSERT_EQ(setUp(black ? back + "/pppppppp/8/8/8/8/8/4K3 b kq -"
                                      : "4k3/8/8/8/8/8/PPPPPPPP/" + back + " w KQ -",
                                Random),
                          "");
                for (const int wing : {0, 1}) {
                    const int targets[2] = {wing == 0 ? 6 : 2, wing == 0 ? 5 : 3};
                    const auto [low, high] =
                        std::minmax({king, rooks[wing], targets[0], targets[1]});
                    bool free = true;
                    for (int file = low; file <= high; ++file) {
                        const bool own = file == king || file == rooks[wing];
                        free = free && (own || cleared[static_cast<std::size_t>(file)] == '1');
                    }
                    const int row = black ? 0 : 7;
                    const std::string text =
                        squareName(squareAt(king, row)) + squareName(squareAt(rooks[wing], row));
                    const std::string name = wing == 0 ? "O-O" : "O-O-O";
                    ASSERT_EQ(read(text), free ? name : "none") << text << " in " << back;
                    if (!free) continue;
                    const Move move = readMove(board, text);
                    ASSERT_EQ(moveText(board, move, CastlingStyle::KingOntoRook), text);
                    const std::string before = snapshot(board);
                    board.makeMove(move);
                    ASSERT_EQ(board.squares[squareAt(targets[0], row)],
                              pieceOf(Kind::King, black ? Black : White));
                    ASSERT_EQ(board.squares[squareAt(targets[1], row)],
                              pieceOf(Kind::Rook, black ? Black : White));
                    expectConsistent(board);
                    board.unmakeMove();
                    ASSERT_TRUE(snapshot(board) == before);
                }
            }
        }
    }
}

/// Holds each principal variation of a search against what the plain listener would print, and the
/// board's records against what they were.
class RenderingListener : public SearchListener {
public:
    void onIteration(const SearchProgress& progress, int, SearchEvent) override {
        const auto moves = [&] {
            std::string text;
            for (const UndoRecord& record : progress.board.undo) {
                text.append(reinterpret_cast<const char*>(&record.move), sizeof record.move);
                text.append(reinterpret_cast<const char*>(&record.hashKey), sizeof record.hashKey);
            }
            return text + snapshot(progress.board);
        };
        const std::string before = moves();
        const std::string line = pv.render(progress, ModernPv::Notation::Letters);
        const std::string san = pv.render(progress, ModernPv::Notation::San);
        EXPECT_TRUE(moves() == before);
        const std::string plain = renderPv(progress, PvStyle::Coordinate);
        EXPECT_TRUE(plain.starts_with(line)) << line << "\n" << plain;
        shortened += plain != line + " ";
        EXPECT_EQ(std::ranges::count(san, ' '), std::ranges::count(line, ' '));
        ++lines;
    }

    int lines = 0;
    int shortened = 0;  ///< of them, those of a finished game

private:
    ModernPv pv;
};

class ModernPvTest : public ModernTextTest {
protected:
    /// The line that starts with these moves and goes on in the table, in an iteration of 40.
    std::string render(const std::vector<Move>& moves,
                       ModernPv::Notation notation = ModernPv::Notation::Letters) {
        const SearchStats stats{};
        const SearchProgress progress{.board = board,
                                      .table = transpositionTable,
                                      .stats = stats,
                                      .nodes = 0,
                                      .mode = SearchMode::Thinking,
                                      .iteration = 40,
                                      .selDepth = 0,
                                      .iterationScore = 0,
                                      .elapsed = 0,
                                      .tableHits = 0,
                                      .branchingFactor = 0,
                                      .rootMovesLeft = 0,
                                      .rootMovesTotal = 0,
                                      .currentMoveText = ""};
        std::ranges::copy(moves, board.pvTable[1] + 1);
        board.pvLength[1] = static_cast<int>(moves.size()) + 1;
        const std::string before = snapshot(board);
        const std::string line = pv.render(progress, notation);
        EXPECT_EQ(pv.render(progress, moves, notation), line);
        EXPECT_TRUE(snapshot(board) == before);
        return line;
    }

    /// Plays the moves, storing each in the table for the position before it.
    std::vector<Move> store(const std::string& moves) {
        std::vector<Move> stored;
        std::istringstream words(moves);
        for (std::string word; words >> word;) {
            stored.push_back(readMove(board, word));
            EXPECT_NE(stored.back(), NoMove) << word;
            storeHere(stored.back());
            board.playGameMove(stored.back());
        }
        return stored;
    }

    void storeHere(Move move) {
        transpositionTable.store(board.hashKey, 1, 0, BoundExact, move, false, 16);
    }

    ModernPv pv;
};

TEST_F(ModernPvTest, RendersWhatTheSearchFinds) {
    const struct {
        const char* fen;
        int depth;
        bool endless;  // the sides can only go to and fro
    } cases[] = {
        {"r2q1rk1/1b2bppp/p1n1pn2/1p6/3N4/1BN1B3/PPP2PPP/R2QR1K1 w - - 2 13", 6, false},
        {"8/2k5/8/1p1p1p2/1P1P1P2/8/3K4/8 w - - 0 1", 9, true},
    };
    for (const auto& [fen, depth, endless] : cases) {
        setPosition(fen);
        RenderingListener listener;
        (void)theSearcher.think({.maxIteration = depth}, listener);
        EXPECT_GE(listener.lines, depth - 2);
        EXPECT_EQ(listener.shortened > 0, endless);
    }
}

TEST_F(ModernPvTest, EndsWithTheGame) {
    const std::string shuffle = "g1f3 g8f6 f3g1 f6g8";
    store(shuffle + " " + shuffle);
    board.NewGame();
    EXPECT_EQ(render({}), shuffle + " " + shuffle) << "the third occurrence";
    ASSERT_TRUE(playMoves(board, shuffle));
    EXPECT_EQ(render({}), shuffle) << "counting those of the game";
    ASSERT_TRUE(playMoves(board, shuffle));
    EXPECT_EQ(render({}), "g1f3") << "the game is over, and one move is shown";

    setPosition("4k3/8/8/8/8/8/8/R3K3 w - - 97 80");
    store("a1a2 e8e7 a2a3 e7e8");
    setPosition("4k3/8/8/8/8/8/8/R3K3 w - - 97 80");
    EXPECT_EQ(render({}), "a1a2 e8e7 a2a3") << "fifty moves";

    const std::string bare = "8/8/8/8/8/4k3/1r6/K7 w - - 0 1";
    setPosition(bare);
    const std::vector<Move> taking = store("a1b2 e3d4");
    setPosition(bare);
    EXPECT_EQ(render({taking[0]}), "a1b2") << "bare kings";
    EXPECT_EQ(render(taking), "a1b2") << "in the principal variation itself";

    // A wrong move in the table, as another position with the same key would leave it
    const std::string mating = "6k1/5ppp/8/8/8/8/8/R3K3 w - - 0 1";
    setPosition(mating);
    const std::vector<Move> mate = store("a1a8");
    storeHere(makePlainMove(squareNamed("g8"), squareNamed("f8"), BlackKing));
    setPosition(mating);
    EXPECT_EQ(render(mate), "a1a8");
    EXPECT_EQ(render(mate, ModernPv::Notation::San), "Ra8#");
    EXPECT_EQ(render({NoMove}), "");
    setPosition("4r1k1/8/8/8/8/8/8/R3K3 w Q - 0 1", Random);
    storeHere(makePlainMove(squareNamed("e1"), squareNamed("c1"), WhiteKing) |
              field::Enroque.put(QueenSide));
    EXPECT_EQ(render({}), "") << "no castling out of check";
}

TEST_F(ModernPvTest, WritesMovesInEachNotation) {
    const std::string fen = "4k3/8/8/8/8/8/8/RK5R w KQ - 0 1";
    setPosition(fen, Random);
    const std::vector<Move> line = store("O-O e8e7");
    setPosition(fen, Random);
    EXPECT_EQ(render(line), "O-O e8e7");
    EXPECT_EQ(render({line[0]}, ModernPv::Notation::KingOntoRook), "b1h1 e8e7");
    EXPECT_EQ(render({line[0]}, ModernPv::Notation::San), "O-O Ke7");
    setPosition("k7/8/8/8/1N3N2/8/1N6/K7 w - - 0 1");
    EXPECT_EQ(render(store("b4d3"), ModernPv::Notation::San), "") << "played";
    board.unmakeMove();
    EXPECT_EQ(render({}, ModernPv::Notation::San), "b4d3") << "Nbd3 would be two knights";
}

/// Near the end of the undo stack a line is shorter, not wrong.
TEST_F(ModernPvTest, StaysWithinTheUndoStack) {
    setPosition("4k3/7p/8/8/8/8/7P/4K3 w - - 0 1");
    const std::vector<Move> stored = store("e1e2 e8e7 h2h4 h7h5");
    for (int i = 0; i < 4; ++i) board.unmakeMove();
    for (const std::uint32_t room : {4U, 5U, 6U, 8U, 100U}) {
        board.ply = UndoRecords - room;
        const std::string line = render(stored);
        EXPECT_EQ(line.substr(0, 4), room > 4 ? "e1e2" : "") << room;
        EXPECT_EQ(line.size() > 10, room > 6) << line;
        board.ply = 0;
    }
}

}  // namespace
}  // namespace brivok
