#include "../apps/book/pgn_reader.h"

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../apps/book/game_counter.h"
#include "board/coordinate.h"
#include "engine_fixture.h"
#include "movegen/san.h"

namespace brivok {
namespace {

constexpr std::size_t AllPlies = 1000;
constexpr const char* StartFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

std::vector<PgnGame> readGames(const std::string& text, std::size_t plies = AllPlies,
                               std::size_t capacity = ByteSource::DefaultCapacity) {
    FileHandle file(std::tmpfile());
    std::fwrite(text.data(), 1, text.size(), file.get());
    std::rewind(file.get());
    ByteSource source(std::move(file), "test", capacity);
    PgnReader reader(source, plies);
    std::vector<PgnGame> games;
    for (PgnGame game; reader.next(game);) games.push_back(game);
    return games;
}

/// The annotated moves, the result and the fault of a game, on one line.
std::string summary(const PgnGame& game) {
    std::string text;
    for (const PgnMove& move : game.moves) {
        text += std::string(move.text());
        if (move.annotation != 0) text += '/' + std::to_string(move.annotation);
        text += " ";
    }
    text += std::string("WBD*").substr(static_cast<std::size_t>(game.result), 1);
    if (game.otherStart) text += " other start";
    if (!game.fault.empty()) text += " " + game.fault + ":" + std::to_string(game.faultLine);
    return text;
}

std::string summary(const std::string& text, std::size_t plies = AllPlies) {
    std::string all;
    for (const PgnGame& game : readGames(text, plies)) {
        all += (all.empty() ? "" : " | ") + summary(game);
    }
    return all;
}

TEST(PgnReader, ReadsWhatIsMetInTheWild) {
    const struct {
        std::string text, games;
    } cases[] = {
        {"", ""},
        {"\n \t\r\n{remark} ;another\n%escape 1. e4\n", ""},
        {"[Result \"1-0\"]\n\n1. e4 e5 2.Nf3 1-0\n", "e4 e5 Nf3 W"},
        {"1.e4 e5 0-1 1. d4 1/2-1/2 1.c4 *", "e4 e5 B | d4 D | c4 *"},
        {"1 e4 e5 2 Nf3 2... Nc6 3 . Bb5 4.\n...a6 1/2", "e4 e5 Nf3 Nc6 Bb5 a6 D"},
        {"1e4e.p. e5 0-0 O-O-O e8(Q)+ e8=Q# exd6 e.p. 0-1",
         "e4e.p e5 0-0 O-O-O e8(Q)+ e8=Q# exd6 B"},
        // Line ends, marks, other alphabets
        {"\xEF\xBB\xBF[Result \"1-0\"]\r\n\r\n1. e4\r\ne5\r\n", "e4 e5 W"},
        {"[White \"J\xFCrgen\"]\r[Result \"0-1\"]\r\r1. e4 \xB1 e5\xA0 2.\xC2\xA0 d4\r",
         "e4 e5 d4 B"},
        // Comments, variations, escape lines
        {"1. e4 {a ) 1-0 } e5 (1... c5 (1... e6 {)} 2. d4) 2. Nf3 ; )\n d6) 2. d4 ; 0-1\n exd4 1-0",
         "e4 e5 d4 exd4 W"},
        {"1. e4\n% d5 0-1\ne5 {\n% } 1-0", "e4 e5 W"},
        {"1. e4 {[%clk 0:01]\n[%eval 1]\n[Nf3] } e5 2. d4 1-0", "e4 e5 d4 W"},
        {"1. e4 N e5 +/- 2. d4+- D = exd4 (=) 0.35 1:02 1-0", "e4 e5 d4+- exd4 W"},
        {"1. e4 -- 2. d4 1-0", "e4 -- d4 W"},
        // Tags in any order and shape; without a result tag, the end of the moves gives the result
        {"[Result \"1/2-1/2\"][A \"]\"][B \"\\\"1-0\\\"\"]{x}[C]\n[D \"open]\n1. e4", "e4 D"},
        {"[RESULT \"1-0\"]\n1. e4 *\n[Event \"?\"]\n[Event \"?\"]\n1. d4 1-0\n", "e4 W | * | d4 W"},
        {"[Result \"?\"]\n1. e4\n [Event \"x\"] 1-0", "e4 * | W"},
        {"[Result \"1-0\"]\n1. e4 0-1", "e4 * the Result tag and the end of the moves disagree:2"},
        // Games other than normal chess from the start position
        {"[FEN \"8/8/8/8/8/8/8/K1k5 w - - 0 1\"] 1. Ka2 1-0", "Ka2 W other start"},
        {"[SetUp \"1\"] 1. e4 1-0 [SetUp \"0\"] 1. e4 1-0 [Variant \"Atomic\"] 1. e4 1-0",
         "e4 W other start | e4 W | e4 W other start"},
        {"[SetUp \"1\"][Variant \"Standard\"][FEN \"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w "
         "KQkq - 0 1\"] 1. e4 1-0",
         "e4 W"},
        // Anything unterminated costs one game
        {"1. e4 { e5\n1-0\n\n[Event \"x\"]\n1. d4 1-0", "e4 * unterminated comment:1 | d4 W"},
        {"1. e4\n(1. c4 (1. b4) 1-0\n[White \"x\"]\n1. d4 1-0",
         "e4 * unterminated variation:2 | d4 W"},
        {"1. d4 1-0 {", "d4 W | * unterminated comment:1"},
    };
    for (const auto& [text, games] : cases) {
        EXPECT_EQ(summary(text), games) << text;
        // The result does not depend on where a piece of the file ends.
        for (const std::size_t capacity : {8U, 9U, 13U}) {
            std::string all;
            for (const PgnGame& game : readGames(text, AllPlies, capacity)) {
                all += (all.empty() ? "" : " | ") + summary(game);
            }
            EXPECT_EQ(all, games) << text;
        }
    }
}

TEST(PgnReader, TakesAnnotations) {
    EXPECT_EQ(summary("1. e4!! e5! 2. d4!? d5?! 3. f4? f5?? 4. g4!!! g5 ! 5. a4 ?? 1-0"),
              "e4/1 e5/2 d4/4 d5/8 f4/16 f5/32 g4 g5/2 a4/32 W");
    EXPECT_EQ(summary("$1 1. e4 $1 e5 $2 2. d4 $3 d5 $4 3. f4 $5 f5 $6 4. g4 $7 g5 $14 $1 1-0"),
              "e4/2 e5/16 d4/1 d5/32 f4/4 f5/8 g4 g5/2 W");
    EXPECT_EQ(summary("1. e4! $2 {?} e5 (1... d5?? $3) $99999999999999999999 2. d4+! 1-0"),
              "e4/2 e5 d4+/2 W");
    EXPECT_EQ(summary("1. e4 e5 2. d4?? 1-0", 2), "e4 e5 W");
}

TEST(PgnReader, KeepsTagsAndPlaces) {
    const auto games = readGames(
        "\n[WhiteElo \"2400\"]\n[BlackElo \"?\"]\n\n1. e4\n e5 1-0\r\n\r\n[BlackElo \"1999 "
        "(x)\"]\r\n1-0");
    ASSERT_EQ(games.size(), 2U);
    EXPECT_EQ(games[0].whiteElo, 2400);
    EXPECT_EQ(games[0].blackElo, std::nullopt);
    EXPECT_EQ(games[0].line, 2U);
    EXPECT_EQ(games[0].moves[1].line, 6U);
    EXPECT_EQ(games[1].whiteElo, std::nullopt);
    EXPECT_EQ(games[1].blackElo, 1999);
    EXPECT_EQ(games[1].line, 8U);
}

class BookGames : public EngineTest {
protected:
    std::string read(const std::string& fen, const std::string& text) {
        setPosition(fen);
        const SanReading reading = readSan(board, text);
        return reading.move == NoMove ? std::string(reading.fault) : moveToCoordinate(reading.move);
    }

    /// Counts a game with these options and fills `observations`.
    Verdict observe(const std::string& text, const CountOptions& options = {}) {
        game = readGames(text).at(0);
        return GameCounter(board, options).observe(game, observations);
    }

    PgnGame game;
    std::vector<Observation> observations;
};

TEST_F(BookGames, ReadsEveryNotation) {
    const struct {
        const char* fen;
        const char* words;
        const char* move;
    } cases[] = {
        {"", "e4 e2e4 e2-e4 Pe4 e4+ e4= e4+/- e4# e4++", "e2e4"},
        {"", "Nf3 Ng1f3 Ng1-f3 g1f3 N1f3 Ngf3 Nxf3", "g1f3"},
        {"", "e5 Ke2 Nd2 Bb5 Nf4 O-O O-O-O e2e5", "illegal move"},
        {"", "e9 i4 x Q -- Z0 e4e e4Q5 Nf3f 4 = O-O-O-O O-O=Q Nfg1f3", "no move text"},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "O-O 0-0 o-o O-O+ e1g1 Ke1g1 Ke1-g1", "e1g1"},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "O-O-O 0-0-0 e8c8 Ke8-c8", "e8c8"},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "Kg1 Kc1", "illegal move"},
        {"3r4/4P3/8/8/8/8/k7/4K3 w - - 0 1", "exd8=Q exd8Q ed8(Q) exd8/Q e7xd8q e7d8Q exd8",
         "e7d8q"},
        {"8/4P3/8/8/8/8/k7/4K3 w - - 0 1", "e8=N e8N e8(N)+ e7e8n e7-e8=N", "e7e8n"},
        {"8/4P3/8/8/8/8/k7/4K3 w - - 0 1", "e8=K e8=P Ke8=Q", "illegal move"},
        {"7k/8/8/3pP3/8/8/8/K7 w - d6 0 1", "exd6 ed6 exd6e.p. exd6ep e5xd6 xd6 e5:d6", "e5d6"},
        {"7k/8/8/3pP3/8/8/8/K7 w - d6 0 1", "d6 e6xd6", "illegal move"},
        {"k7/8/8/8/1N3N2/8/1N6/K7 w - - 0 1", "N4d3 N4xd3 Nbd3", "ambiguous move"},
        {"k7/8/8/8/1N3N2/8/1N6/K7 w - - 0 1", "Nb4d5 Nbd5 Nb4-d5+", "b4d5"},
        {"k3r3/8/8/8/8/2N1N3/8/4K3 w - - 0 1", "Nd5 Nc3d5", "c3d5"},  // the other one is pinned
        {"3k4/8/8/1p6/2P1B3/8/8/K7 w - - 0 1", "bxc6", "illegal move"},
        {"1r2k3/P7/8/1p6/2P5/8/8/K4B2 w - - 0 1", "cxb5 cb5 c:b5", "c4b5"},
    };
    for (const auto& [fen, words, move] : cases) {
        std::istringstream list(words);
        for (std::string word; list >> word;) {
            EXPECT_EQ(read(*fen == '\0' ? StartFen : fen, word), move) << word;
        }
    }
}

TEST_F(BookGames, CountsGames) {
    // The start position recurs, and so does the position after 1. Nf3.
    EXPECT_EQ(observe("1. Nf3! Nf6 2. Ng1 Ng8 3. Nf3? Nf6 4. d4 1-0"), Verdict::Counted);
    ASSERT_EQ(observations.size(), 4U + 1);
    EXPECT_EQ(observations[0].annotation(), 2U);
    EXPECT_EQ(observations[0].result(), GameResult::WhiteWins);
    EXPECT_EQ(observations[3].mover(), Black);
    ASSERT_TRUE(playMoves(board, "g1f3"));
    EXPECT_EQ(board.hashKey, observations[0].key);

    CountOptions options;
    options.plies = 5;
    options.whiteMoves = false;
    EXPECT_EQ(observe("1. e4 e5 2. d4 d5 3. c4 c5 1-0", options), Verdict::Counted);
    EXPECT_EQ(observations.size(), 2U);

    options.minElo = 2000;
    const struct {
        const char* text;
        Verdict verdict;
    } cases[] = {
        {"[WhiteElo \"2000\"] 1. e4 1-0", Verdict::Counted},
        {"[BlackElo \"1999\"] 1. e4 1-0", Verdict::LowRating},
        {"[FEN \"x\"] 1. e4 Ke4 1-0", Verdict::OtherStart},
        {"1. e4 Ke4 *", Verdict::NoResult},
        {"[Event \"x\"] 1-0", Verdict::NoMoves},
        {"1. e4 e5 2. e4 1-0", Verdict::Broken},
        {"1. e4 e5 { 1-0", Verdict::Broken},
        {"1. e4 e5 2. d4 d5 3. c4 Ke4 1-0", Verdict::Counted},  // beyond the limit
    };
    for (const auto& [text, verdict] : cases) {
        EXPECT_EQ(observe(text, options), verdict) << text;
        EXPECT_TRUE(observations.empty() || verdict == Verdict::Counted) << text;
        EXPECT_EQ(board.ply, 0U);
    }
    EXPECT_EQ(observe("1. e4\ne5\n2. e4 1-0"), Verdict::Broken);
    EXPECT_EQ(game.fault, "illegal move: 2. e4");
    EXPECT_EQ(game.faultLine, 3U);
}

TEST_F(BookGames, SurvivesEveryByte) {
    std::mt19937 random(7);
    const std::string alphabet = "[]{}();%$!?*\"\\\r\n\n  .-+=/x01248abeNQO\xFF";
    const std::string pieces[] = {"1. e4 ", "[Event \"", "[Result \"1-0\"]\n",
                                  "O-O ",   "1-0 ",      "Nf3 "};
    for (int round = 0; round < (SlowBuild ? 300 : 3000); ++round) {
        std::string text;
        while (text.size() < 400) {
            if (random() % 4 == 0) {
                text += pieces[random() % std::size(pieces)];
            } else if (round % 2 == 0) {
                text += alphabet[random() % alphabet.size()];
            } else {
                text += static_cast<char>(random());
            }
        }
        GameCounter counter(board, {});
        for (PgnGame& found : readGames(text, 3, 16)) (void)counter.observe(found, observations);
        EXPECT_EQ(board.ply, 0U);
    }
}

}  // namespace
}  // namespace brivok
