#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "board/coordinate.h"
#include "engine_fixture.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/transposition_table.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "movegen/san.h"
#include "search/time_control.h"
#include "shell/base/words.h"
#include "shell/move_counts.h"

namespace brivok {
namespace {

using Probe = TranspositionTable::Probe;
using Words = std::vector<std::string>;

class TableTest : public EngineTest {
protected:
    static constexpr std::uint64_t Key = 0x1234567800000042;
    static constexpr std::uint64_t SameBucket = 0x8765432100000042;

    void SetUp() override {
        table.resize();
        table.nextGeneration();
    }

    Probe probe(std::uint64_t key, int depth = 16, int searchPly = 4, int beta = 0) {
        allowNull = true;
        return table.probe(key, searchPly, beta, depth, found, allowNull);
    }

    void store(std::uint64_t key, int depth, int score = 10, int searchPly = 4, Move move = 7) {
        table.store(key, searchPly, score, BoundExact, move, false, depth);
    }

    TranspositionTable table;
    TranspositionTable::Found found;
    bool allowNull = true;
};

TEST_F(TableTest, Sizes) {
    for (const auto& [megabytes, buckets] :
         {std::pair{1U, 32768U}, {2U, 65536U}, {3U, 65536U}, {31U, 524288U}}) {
        settings.hashMB = megabytes;
        table.resize();
        EXPECT_EQ(table.size(), buckets) << megabytes;
    }
}

TEST_F(TableTest, Replacement) {
    store(Key, 40);
    store(SameBucket, 40);
    EXPECT_EQ(probe(Key), Probe::None) << "an equal depth takes the slot";
    EXPECT_EQ(probe(SameBucket), Probe::Exact);
    store(Key, 39);
    EXPECT_EQ(probe(SameBucket), Probe::Exact);
    EXPECT_EQ(probe(Key), Probe::Exact) << "a smaller depth goes beside it";
    EXPECT_EQ(probe(Key, 40), Probe::TooShallow);
    EXPECT_EQ(found.move, 7U);
    store(Key, 41, 10, 4, NoMove);
    EXPECT_EQ(probe(SameBucket), Probe::None);
    EXPECT_EQ(probe(Key), Probe::Exact);
    EXPECT_EQ(found.move, NoMove) << "the deeper entry is found first, without the old move";
}

TEST_F(TableTest, Generations) {
    store(Key, 400);
    store(SameBucket, 100);
    table.nextGeneration();
    EXPECT_EQ(probe(Key), Probe::None) << "the deep slot lasts for one search";
    EXPECT_EQ(probe(SameBucket), Probe::Exact) << "the other slot has no age";
    for (int i = 1; i < 7; ++i) table.nextGeneration();
    EXPECT_EQ(probe(Key), Probe::Exact) << "seven generations come round";
    table.nextGeneration();
    store(SameBucket, 16, 77);
    EXPECT_EQ(probe(SameBucket), Probe::Exact);
    EXPECT_EQ(found.score, 77) << "an old deep entry gives way";
    table.clear();
    EXPECT_EQ(probe(SameBucket), Probe::None);
}

TEST_F(TableTest, MateScoresCountFromThePosition) {
    const struct {
        int stored, read;
    } cases[] = {{32750, 32756}, {-32750, -32756}, {32268, 32274},
                 {32267, 32267}, {-32267, -32267}, {0, 0}};
    for (const auto& [stored, read] : cases) {
        store(Key, 16, stored, 10);
        ASSERT_EQ(probe(Key, 16, 4), Probe::Exact);
        EXPECT_EQ(found.score, read);
    }
}

TEST_F(TableTest, NullMoveHintAndMateThreat) {
    table.store(Key, 4, -50, BoundUpper, NoMove, true, 40);
    EXPECT_EQ(probe(Key, 88), Probe::TooShallow);
    EXPECT_FALSE(allowNull);
    EXPECT_TRUE(found.mateThreat);
    EXPECT_EQ(probe(Key, 89), Probe::TooShallow);
    EXPECT_TRUE(allowNull);
    EXPECT_EQ(probe(Key, 40, 4, -50), Probe::Upper);
    EXPECT_TRUE(allowNull) << "the score is not below beta";
    table.store(Key, 4, -50, BoundLower, NoMove, false, 40);
    EXPECT_EQ(probe(Key, 40), Probe::Lower);
    EXPECT_TRUE(allowNull && !found.mateThreat);
}

TEST_F(TableTest, BestMoveIsTestedOnTheBoard) {
    const Move e4 = moveNamed(board, "e2e4");
    EXPECT_EQ(table.bestMove(board), NoMove);
    store(board.hashKey, 16, 0, 1, e4);
    table.nextGeneration();
    EXPECT_EQ(probe(board.hashKey), Probe::None);
    EXPECT_EQ(table.bestMove(board), e4) << "of any generation";
    store(board.hashKey, 16, 0, 1, e4 ^ field::Pieza.put(1));
    EXPECT_EQ(table.bestMove(board), NoMove);
}

TEST_F(TableTest, Fill) {
    EXPECT_EQ(table.fillPermille(), 0U);
    for (std::uint64_t key = 0; key < table.size() / 2; ++key) store(key | Key << 32U, 32);
    EXPECT_EQ(table.fillPermille(), 249U);
    for (std::uint64_t key = 0; key < table.size() / 2; ++key) store(key | Key << 33U, 16);
    EXPECT_EQ(table.fillPermille(), 499U);
    table.nextGeneration();
    EXPECT_EQ(table.fillPermille(), 249U) << "slots without age stay counted";
}

TEST(ZeroedArray, Sizes) {
    struct alignas(64) Line {
        std::uint64_t words[8];
    };
    ZeroedArray<Line> lines;
    const auto isZero = [](const Line& line) {
        return std::ranges::all_of(line.words, [](std::uint64_t word) { return word == 0; });
    };
    // Small and large ones, of whole pages and not, and each size again: memory is given back
    // dirty.
    for (const std::size_t count : {3U, 3U, 16384U, 65536U, 65536U, 100001U, 3U, 131072U, 65536U}) {
        ASSERT_TRUE(lines.allocate(count));
        ASSERT_EQ(lines.size(), count);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&lines[0]) % 4096, 0U);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(isZero(lines[i])) << i << " of " << count;
            lines[i].words[i % 8] = 1;
        }
        lines.clear();
        EXPECT_TRUE(isZero(lines[0]) && isZero(lines[count / 2]) && isZero(lines[count - 1]));
        lines[count - 1].words[7] = 1;
    }
    EXPECT_FALSE(lines.allocate(std::size_t{1} << 50U));
    EXPECT_EQ(lines.size(), 0U);
}

TEST_F(EngineTest, RecordTables) {
    const struct {
        std::uint32_t megabytes;
        std::uint64_t evalRecords, pawnRecords;
    } sizes[] = {{1, 65536, 8192}, {2, 131072, 16384}, {3, 131072, 32768}, {64, 4194304, 524288}};
    for (const auto& [megabytes, evalRecords, pawnRecords] : sizes) {
        EXPECT_EQ(recordCountFor(megabytes, EvalHashRecord::CountedBytes), evalRecords);
        EXPECT_EQ(recordCountFor(megabytes, PawnHashRecord::CountedBytes), pawnRecords);
    }
    const EvalHashRecord* const first = &evalHashTable.Find(0);
    for (std::uint64_t key :
         {0ULL, 1ULL, 65534ULL, 65535ULL, 65536ULL, 0xFFFFFFFFULL, 0x80000000ULL, 0xDEADBEEFULL,
          0xFFFFFFFF00000000ULL, 0x123456789ABCDEF0ULL}) {
        EXPECT_EQ(&evalHashTable.Find(key) - first, (key & 0xFFFFFFFF) % 65535) << key;
        key *= 0x9E3779B97F4A7C15;
        EXPECT_EQ(&pawnHashTable.Find(key) - &pawnHashTable.Find(0), (key & 0xFFFFFFFF) % 8191);
    }
}

TEST(TimeControl, Budgets) {
    const auto budget = [](TimeControl clock) { return clock.AllocateTime(); };
    const struct {
        std::uint32_t own, opponent, start, increment, expected;
    } cases[] = {
        {30000, 30000, 30000, 0, 1000}, {15000, 30000, 30000, 0, 300},
        {26000, 30000, 60000, 0, 650},  {28000, 30000, 60000, 0, 800},
        {28000, 30000, 30000, 0, 933},  {4000, 5000, 5000, 0, 57},
        {30000, 15000, 30000, 0, 2000}, {30000, 26000, 30000, 0, 1500},
        {30000, 28000, 30000, 0, 1200}, {5000, 5000, 6000, 100, 183},
        {300, 300, 6000, 300, 10},      {1000, 1000, 6000, 600, 433},
    };
    for (const auto& [own, opponent, start, increment, expected] : cases) {
        TimeControl clock;
        clock.ownTime = own;
        clock.oppTime = opponent;
        clock.ownStart = start;
        clock.ownIncrement = increment;
        EXPECT_EQ(budget(clock), expected) << own << " against " << opponent;
    }
    // With moves to go: none of the increment, two thirds of it, or all.
    for (const auto& [own, left, increment, expected] : {std::tuple{30000U, 40U, 0U, 675U},
                                                         {10000U, 5U, 0U, 1800U},
                                                         {1000U, 5U, 0U, 153U},
                                                         {1000U, 5U, 1200U, 153U},
                                                         {1000U, 5U, 600U, 553U},
                                                         {30000U, 40U, 200U, 875U}}) {
        TimeControl clock;
        clock.setConventional(40, 5);
        clock.ownTime = own;
        clock.movesLeft = left;
        clock.ownIncrement = increment;
        EXPECT_EQ(budget(clock), expected) << own << " with " << increment;
    }
    TimeControl clock;
    clock.setIncrement(2, 12);
    EXPECT_EQ(clock.ownTime + clock.oppStart + clock.ownIncrement + clock.oppIncrement, 26400U);
    clock.setFixedTime(250);
    EXPECT_EQ(budget(clock), 250U);
    EXPECT_EQ(clock.ownTime, 0U) << "a setter forgets the clocks";
    clock.setDefault();
    EXPECT_EQ(clock.kind, ClockKind::Conventional);
    EXPECT_EQ(clock.movesPerSession, 40U);
    EXPECT_EQ(clock.ownTime, 30000U);
}

TEST(TimeControl, Extensions) {
    const struct {
        std::uint32_t session, left, own, increment, allocated;
        bool extends;
    } cases[] = {
        {40, 10, 5499, 0, 500, false}, {40, 10, 5500, 0, 500, true}, {40, 1, 999, 0, 10, false},
        {40, 1, 1000, 0, 10, true},    {0, 0, 5999, 0, 1000, false}, {0, 0, 6000, 0, 1000, true},
        {0, 0, 5900, 100, 1000, true}, {0, 0, 7999, 0, 4000, false}, {0, 0, 8000, 0, 4000, true},
    };
    for (const auto& [session, left, own, increment, allocated, extends] : cases) {
        TimeControl clock;
        clock.movesPerSession = session;
        clock.movesLeft = left;
        clock.ownTime = own;
        clock.ownIncrement = increment;
        clock.allocated = allocated;
        EXPECT_EQ(clock.ExtendTime(), extends) << own << " " << allocated;
        EXPECT_EQ(clock.allocated, extends ? 2 * allocated : allocated);
    }
}

TEST_F(EngineTest, InsufficientMaterial) {
    for (const char* const men : {"8/8", "N7/8", "8/b7"}) {
        setPosition("4k3/8/8/8/8/" + std::string(men) + "/4K3 w - - 0 1");
        EXPECT_TRUE(board.isInsufficientMaterial()) << men;
    }
    for (const char* const men : {"P7/8", "r7/8", "q7/8", "NN6/8", "B7/b7", "Nn6/8"}) {
        setPosition("4k3/8/8/8/8/" + std::string(men) + "/4K3 w - - 0 1");
        EXPECT_FALSE(board.isInsufficientMaterial()) << men;
    }
}

TEST_F(EngineTest, RepetitionsAreCountedByTreeAndGame) {
    const auto count = [this](int searchPly) {
        const Board::Repetitions found = board.countRepetitions(searchPly);
        return std::pair(found.inTree, found.inGame);
    };
    const std::string round = "g8f6 f3g1 f6g8 g1f3";
    EXPECT_EQ(count(0), std::pair(0, 1));
    ASSERT_TRUE(playMoves(board, "g1f3 " + round));
    EXPECT_EQ(count(0), std::pair(0, 2));
    EXPECT_EQ(count(5), std::pair(1, 1)) << "the first was the root";
    EXPECT_EQ(count(3), std::pair(1, 1)) << "the first was in the game";
    ASSERT_TRUE(playMoves(board, round));
    EXPECT_EQ(count(0), std::pair(0, 3));
    EXPECT_EQ(count(9), std::pair(2, 1));
    ASSERT_TRUE(playMoves(board, "e7e5 f3g1 g8f6 g1f3 f6g8"));
    EXPECT_EQ(count(0), std::pair(0, 2)) << "nothing behind a pawn move counts";
    board.fiftyCount = 1;
    EXPECT_EQ(count(3), std::pair(1, 0)) << "nothing to compare with";
}

TEST_F(EngineTest, OrderOfEvasions) {
    const struct {
        const char *fen, *moves;
    } cases[] = {
        {"rnbqkbnr/ppp2ppp/8/1B1pp3/8/8/PPPPPPPP/RNBQK1NR b KQkq - 0 1",
         "e8e7 b8c6 b8d7 c8d7 d8d7 c7c6"},
        {"r3k3/8/8/8/7q/8/3PP3/R2QK1NR w KQ - 0 1", "e1f1 h1h4"},
        {"4k3/3P4/8/8/8/8/8/4K3 b - - 0 1", "e8f7 e8e7 e8d7 e8f8 e8d8"},
        {"4k3/8/5N2/8/8/8/4R3/4K3 b - - 0 1", "e8f7 e8f8 e8d8"},  // double check
        {"k7/8/8/8/3r4/3K4/8/8 w - - 0 1", "d3d4 d3c3 d3e3 d3c2 d3e2"},
        {"3R2k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", ""},
        {"4k3/8/8/8/7b/8/3P2P1/4K3 w - - 0 1", "e1e2 e1d1 e1f1 g2g3"},
    };
    for (const auto& [fen, moves] : cases) {
        setPosition(fen);
        const std::vector<Move> generated = generatedMoves(board);
        ASSERT_TRUE(board.inCheck()) << fen;
        EXPECT_EQ(textOf(generated), moves) << fen;
        EXPECT_EQ(legalMoves(board, generated), generated) << fen;
    }
    setPosition("8/8/8/2k5/3Pp3/8/8/4K3 b - d3 0 1");
    EXPECT_TRUE(moveIsEnPassant(moveNamed(board, "e4d3"))) << "the checking pawn is taken";
    setPosition("4k3/8/8/8/3b4/2K5/8/8 w - - 0 1");
    EXPECT_EQ(moveNamed(board, "c3b2"), NoMove) << "on along the line of the check";
}

TEST_F(EngineTest, MoveText) {
    EXPECT_EQ(moveToCoordinate(NoMove), "a8a8");
    EXPECT_EQ(moveToSan(board, NoMove), "xxxx");
    const struct {
        const char *fen, *moves, *san;
    } cases[] = {
        {"6k1/5ppp/8/8/8/8/8/R3K3 w Q - 0 1", "a1a8", "Ra8#"},
        {"6k1/5ppp/8/8/8/8/8/R3K3 w Q - 0 1", "e1c1", "O-O-O"},
        {"k7/8/8/8/1N3N2/8/1N6/K7 w - - 0 1", "b4d5 f4d5 b4d3 f4d3 b2d3",
         "Nbd5 Nfd5 Nbd3 Nfd3 N2d3"},
        {"7k/8/8/3pP3/8/8/8/K7 w - d6 0 1", "e5d6 e5e6", "exd6 e6"},
        {"4k3/1P6/8/8/8/8/8/4K3 w - - 0 1", "b7b8q b7b8r b7b8b b7b8n", "b8=Q+ b8=R+ b8=B b8=N"},
        {"2r1k3/1P6/8/8/8/8/8/4K3 w - - 0 1", "b7c8q b7b8n", "bxc8=Q+ b8=N"},
    };
    for (const auto& [fen, moves, san] : cases) {
        setPosition(fen);
        const std::string before = snapshot(board);
        std::string text;
        for (const std::string& word : SplitWords(moves)) {
            const Move move = parseMove(board, word);
            EXPECT_EQ(moveToCoordinate(move), word);
            if (!text.empty()) text += ' ';
            text += moveToSan(board, move);
        }
        EXPECT_EQ(text, san) << fen;
        EXPECT_TRUE(snapshot(board) == before);
    }
    setPosition("4k3/8/8/8/4r3/8/4N3/4K3 w - - 0 1");
    EXPECT_EQ(moveToSan(board, moveNamed(board, "e2c3")), "xxxx") << "pinned";
    EXPECT_EQ(parseMove(board, "e2c3"), NoMove);
}

TEST_F(EngineTest, WordsThatAreMoves) {
    for (const char* const word : {"e2e4", "e7e8q", "e7e8Q", "z9z0x", "e2e4x"}) {
        EXPECT_TRUE(IsMoveText(word)) << word;
    }
    for (const char* const word : {"", "e2", "e2e", "e2e4qq", "e2e45", "2e4e", "O-O", "e2-e4"}) {
        EXPECT_FALSE(IsMoveText(word)) << word;
    }
    for (const char* const word : {"e2e4x", "e2e5", "E2E4", "e7e5", "a8a8", ""}) {
        EXPECT_EQ(parseMove(board, word), NoMove) << word;
    }
    const std::string fen = "4k3/8/8/8/8/8/8/4K2R w K - 0 1";
    setPosition(fen);
    EXPECT_EQ(moveCastle(parseMove(board, "e1g1")), KingSide);
    EXPECT_EQ(parseMove(board, "O-O"), NoMove);
    setPosition(fen, Variant::Fischerandom);
    EXPECT_EQ(moveCastle(parseMove(board, "O-O")), KingSide);
    EXPECT_EQ(parseMove(board, "e1g1") | parseMove(board, "O-O-O"), NoMove);
    EXPECT_TRUE(IsMoveText("O-O-O"));
    EXPECT_FALSE(IsMoveText("O-O-"));
    EXPECT_EQ(parseMove(board, "O-O"), 60U | 0x4005F80U);
}

TEST_F(EngineTest, ListOfLegalMoves) {
    setPosition("k7/8/8/8/4r3/8/3BN3/4K3 w - - 0 1");
    ::testing::internal::CaptureStdout();
    listLegalMoves(board);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "d2h6 d2a5 d2g5 d2b4 d2f4 d2c3 d2e3 d2c1 e1f2 e1d1 e1f1 \n");
}

TEST(Words, SplitAtSpacesAlone) {
    EXPECT_EQ(SplitWords("  go   depth 5\n"), (Words{"go", "depth", "5"}));
    EXPECT_EQ(SplitWords("a\tb c"), (Words{"a\tb", "c"}));
    EXPECT_EQ(SplitWords("go \n"), (Words{"go", ""}));
    EXPECT_EQ(SplitWords("\n"), Words{""});
    EXPECT_EQ(SplitWords(""), Words{});
    EXPECT_EQ(SplitWords("stop"), Words{"stop"});
}

TEST(Words, Integers) {
    const struct {
        const char* text;
        std::int64_t value;
    } cases[] = {{"42", 42},
                 {"-7x", -7},
                 {"+5", 5},
                 {"", 0},
                 {"x1", 0},
                 {"-", 0},
                 {"3.9", 3},
                 {"007", 7},
                 {"4294967296", 4294967296},
                 {"99999999999999999999999999", HugeNumber},
                 {"-99999999999999999999999999", -HugeNumber}};
    for (const auto& [text, value] : cases) EXPECT_EQ(parseInteger(text), value) << text;
}

}  // namespace
}  // namespace brivok
