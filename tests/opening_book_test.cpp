#include "book/opening_book.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <span>

#include "engine_fixture.h"
#include "movegen/legal_moves.h"
#include "search/searcher.h"

namespace brivok {

namespace {

class OpeningBookTest : public EngineTest {
protected:
    OpeningBookTest()
        : folder(std::filesystem::temp_directory_path() /
                 ("brivok-book-" + std::to_string(std::random_device{}()))),
          path((folder / "libro.bin").string()) {
        std::filesystem::create_directory(folder);
    }
    ~OpeningBookTest() override { std::filesystem::remove_all(folder); }

    /// Adds the position after these moves of a game.
    void know(const std::string& moves, std::uint32_t whiteWins, std::uint32_t blackWins,
              std::uint32_t draws, std::uint32_t annotation = 0) {
        Board other;
        other.NewGame();
        ASSERT_TRUE(playMoves(other, moves));
        records.push_back({other.hashKey, whiteWins, blackWins, draws, annotation});
    }

    void writeBook(bool sorted = true) {
        if (sorted) std::ranges::sort(records, {}, &BookRecord::key);
        std::string bytes;
        for (const BookRecord& record : records) {
            append(bytes, record.key, 8);
            for (const std::uint32_t word :
                 {record.whiteWins, record.blackWins, record.draws, record.annotation}) {
                append(bytes, word, 4);
            }
        }
        writeBytes(bytes);
    }

    void writeBytes(const std::string& bytes) {
        std::ofstream(path, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    /// How often each move is chosen in `draws` draws.
    std::map<std::string, int> choices(int draws) {
        OpeningBook book(path);
        EXPECT_TRUE(book.Open());
        bool third = false;
        const auto candidates = findBookCandidates(board, book, third);
        std::mt19937 generator(1);
        std::uniform_int_distribution<int> random(0, MaxBookRandom);
        std::map<std::string, int> counts;
        for (int i = 0; i < draws; ++i) {
            ++counts[textOf({chooseBookMove(candidates, [&] { return random(generator); })})];
        }
        return counts;
    }

    std::string selected() {
        const std::string before = snapshot(board);
        const Move move = OpeningBook(path).SelectMove(board);
        EXPECT_EQ(snapshot(board), before);
        return move == NoMove ? "" : textOf({move});
    }

    std::filesystem::path folder;
    std::string path;
    std::vector<BookRecord> records;

private:
    static void append(std::string& bytes, std::uint64_t value, int count) {
        for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    }
};

}  // namespace

TEST_F(OpeningBookTest, FindsEveryRecord) {
    std::uint32_t n = 0;
    for (const char* first : {"e2e4", "d2d4", "c2c4", "g1f3", "b1c3", "a2a3", "h2h4"}) {
        ++n;
        know(first, n, 2 * n, 3 * n, n);
    }
    writeBook();
    OpeningBook book(path);
    BookRecord record;
    EXPECT_FALSE(book.Find(board, record));  // still closed
    ASSERT_TRUE(book.Open());
    EXPECT_FALSE(book.Find(board, record));
    for (const BookRecord& known : records) {
        board.hashKey = known.key;
        ASSERT_TRUE(book.Find(board, record));
        EXPECT_EQ(record.whiteWins, known.whiteWins);
        EXPECT_EQ(record.blackWins, known.blackWins);
        EXPECT_EQ(record.draws, known.draws);
        EXPECT_EQ(record.annotation, known.annotation);
    }
    board.NewGame();
    int moves = 0;
    std::uint32_t white = 0;
    std::uint32_t black = 0;
    std::uint32_t draws = 0;
    EXPECT_EQ(book.CountBookMoves(board, moves, white, black, draws), 28U * 6);
    EXPECT_EQ(moves, 7);
    EXPECT_EQ(white, 28U);
    EXPECT_EQ(black, 56U);
    EXPECT_EQ(draws, 84U);
}

TEST_F(OpeningBookTest, ScoresByMoverAndAnnotation) {
    const auto score = [](BookRecord record, Side mover) { return bookScore(record, mover); };
    EXPECT_EQ(score({0, 120, 20, 7, 0}, White), 103);
    EXPECT_EQ(score({0, 120, 20, 7, 0}, Black), -97);
    const std::map<std::uint32_t, std::int64_t> scaled{{1, 404}, {2, 303}, {4, 202}, {8, 50},
                                                       {16, 33}, {32, 25}, {3, 101}, {64, 101}};
    for (const auto& [annotation, expected] : scaled) {
        EXPECT_EQ(score({0, 101, 0, 1, annotation}, White), expected) << annotation;
        EXPECT_EQ(score({0, 0, 101, 1, annotation}, Black), expected) << annotation;
        EXPECT_EQ(score({0, 0, 101, 1, annotation}, White), -expected) << annotation;
        EXPECT_EQ(AnnotationText(annotation).empty(), expected == 101);
    }
    EXPECT_EQ(score({0, 0xFFFFFFFF, 0, 0xFFFFFFFF, 1}, White), 25769803768);
}

// A move with score s against a best move with score m: the probability can be calculated.
TEST_F(OpeningBookTest, ChoosesByTheRule) {
    know("e2e4", 100, 0, 0);
    know("d2d4", 50, 0, 0);
    know("c2c4", 6, 0, 0);   // 15 x 6 is below the best
    know("g1f3", 0, 30, 0);  // lost more than won
    writeBook();
    // Both are raised by up to 120: the second wins if its random part exceeds the other's by more
    // than 50, which is half a square of side 120 - 50 within 120 x 120.
    const int draws = 20000;
    auto counts = choices(draws);
    EXPECT_NEAR(counts["d2d4"], draws * (70.0 * 70 / 2) / (120.0 * 120), 300);
    EXPECT_EQ(counts["e2e4"] + counts["d2d4"], draws);

    // A score just above a fifteenth of the best takes part; ties go to the first in the list.
    const std::vector<BookCandidate> edge{
        {.move = 1, .score = 15}, {.move = 2, .score = 1}, {.move = 3, .score = 2}};
    std::vector<int> numbers{0, MaxBookRandom, MaxBookRandom};
    std::size_t next = 0;
    const auto scripted = [&] { return numbers[next++]; };
    EXPECT_EQ(chooseBookMove(edge, scripted), 3U);  // 15 against 2 + 18
    // One random number per candidate that takes part.
    EXPECT_EQ(next, 2U);
    next = 0;
    const std::vector<BookCandidate> ties{{.move = 7, .score = 9}, {.move = 8, .score = 9}};
    numbers = {500, 500};
    EXPECT_EQ(chooseBookMove(ties, scripted), 7U);
    EXPECT_EQ(chooseBookMove({}, scripted), NoMove);
}

TEST_F(OpeningBookTest, WithoutPositiveScoresTakesTheFirst) {
    know("e2e4", 0, 9, 0);
    know("d2d4", 0, 1, 1);
    know("b1c3", 0, 40000, 0);
    writeBook();
    std::string first;
    for (const Move move : legalMoves(board, generatedMoves(board))) {
        const std::string text = textOf({move});
        if (first.empty() && (text == "e2e4" || text == "d2d4" || text == "b1c3")) first = text;
    }
    for (int i = 0; i < 3; ++i) EXPECT_EQ(selected(), first);
    records.resize(1);
    writeBook();
    EXPECT_NE(selected(), "");
}

TEST_F(OpeningBookTest, ThirdOccurrenceClosesTheBook) {
    for (const char* line : {"g1f3 g8f6 f3g1 f6g8", "g1f3 g8f6 f3g1 f6g8 e2e4"})
        know(line, 5, 0, 0);
    know("g1f3 g8f6 f3g1 e7e5", 0, 5, 0);
    writeBook();
    const std::string shuffle = "g1f3 g8f6 f3g1 f6g8 ";
    ASSERT_TRUE(playMoves(board, shuffle + "g1f3 g8f6 f3g1"));
    board.bookGate = 0;
    EXPECT_EQ(selected(), "");  // Black could repeat the start position for the third time
    EXPECT_EQ(board.bookGate, FullBookGate);
    board.NewGame();
    ASSERT_TRUE(playMoves(board, shuffle));
    EXPECT_EQ(selected(), "e2e4");
    EXPECT_EQ(board.bookGate, 0U);
}

// Malformed books with the right keys: no crash, no hang, and only legal moves.
TEST_F(OpeningBookTest, BrokenFilesDoNoHarm) {
    EXPECT_EQ(selected(), "");  // no such file
    EXPECT_EQ(OpeningBook(folder.string()).SelectMove(board), NoMove);
    writeBytes("");
    EXPECT_EQ(selected(), "");
    know("e2e4", 1, 0, 0);
    writeBook();
    std::filesystem::resize_file(path, BookRecord::Bytes - 1);
    EXPECT_EQ(selected(), "");

    std::mt19937 generator(3);
    std::uniform_int_distribution<std::uint32_t> any;
    for (const Move move : legalMoves(board, generatedMoves(board))) {
        know(textOf({move}), any(generator), any(generator), any(generator), any(generator) % 64);
    }
    for (int round = 0; round < 100; ++round) {
        std::ranges::shuffle(records, generator);
        writeBook(round == 0);
        std::filesystem::resize_file(path, generator() % (records.size() * BookRecord::Bytes));
        const Move move = OpeningBook(path).SelectMove(board);
        EXPECT_TRUE(move == NoMove || isLegalMove(board, move));
        EXPECT_EQ(board.bookGate, 0U);
    }
}

TEST_F(OpeningBookTest, ThinkAsksItWhenItMay) {
    know("a2a3", 5, 0, 0);
    writeBook();
    settings.bookFileName = path;
    settings.bookEnabled = true;
    const auto fromBook = [&](SearchRequest request) {
        SearchListener silent;
        request.maxIteration = 2;
        const Move move = theSearcher.think(request, silent);
        EXPECT_EQ(theSearcher.bookMove, textOf({move}) == "a2a3");
        return theSearcher.bookMove;
    };
    EXPECT_TRUE(fromBook({}));
    EXPECT_FALSE(fromBook({.mode = SearchMode::Analysing}));
    EXPECT_FALSE(fromBook({.mode = SearchMode::Pondering}));
    const std::vector<Move> choice = generatedMoves(board);
    EXPECT_FALSE(fromBook({.searchMoves = std::span(choice).last(2)}));
    EXPECT_FALSE(fromBook({.mateIn = 2}));
    board.bookGate = OpenBookGate;
    EXPECT_FALSE(fromBook({}));
    board.bookGate = OpenBookGate - 1;
    settings.bookEnabled = false;
    EXPECT_FALSE(fromBook({}));
}

}  // namespace brivok
