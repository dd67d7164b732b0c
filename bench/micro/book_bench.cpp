// Lookups in books whose files the system has cached.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <string>

#include "book/opening_book.h"
#include "engine_positions.h"
#include "movegen/legal_moves.h"

namespace brivok {
namespace {

/// One lookup again and again, so that the book remembers its records.
/// The position after a move such as 1. e4 is in the book; those of the set are not.
void bookFind(benchmark::State& state, bool known) {
    prepareEngine();
    OpeningBook book(BRIVOK_DEFAULT_BOOK);
    Board board = theBoard;
    board.NewGame();
    bool isOpen = book.Open();
    if (known && isOpen) {
        bool third = false;
        const auto candidates = findBookCandidates(board, book, third);
        isOpen = !candidates.empty();
        if (isOpen) board.makeMove(candidates.front().move);
    }
    if (!known) board = positions().back();
    BookRecord record;
    if (!isOpen || book.Find(board, record) != known) {
        state.SkipWithError("the book does not answer");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(book.Find(board, record));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(bookFind, Known, true);
BENCHMARK_CAPTURE(bookFind, Unknown, false);

/// A book with this many records, as evenly spread as keys are, among them those of all first moves
/// of a game. Written to a temporary file, which goes with it.
class LargeBook {
public:
    static constexpr std::uint64_t Records = 10'000'000;

    LargeBook() {
        std::map<std::uint64_t, std::uint64_t> known;  // key of a slot
        Board board = theBoard;
        board.NewGame();
        forEachLegalMove(board, [&](Move) { known[board.hashKey / Step] = board.hashKey; });
        std::ofstream file(path, std::ios::binary);
        std::array<std::uint64_t, BookRecord::Bytes / 8> record{0, 3 + (2ULL << 32U), 1};
        for (std::uint64_t slot = 0; slot < Records; ++slot) {
            const auto own = known.find(slot);
            record[0] = own == known.end() ? slot * Step : own->second;
            file.write(reinterpret_cast<const char*>(record.data()), BookRecord::Bytes);
        }
    }
    LargeBook(const LargeBook&) = delete;
    LargeBook& operator=(const LargeBook&) = delete;
    ~LargeBook() { std::filesystem::remove(path); }

    [[nodiscard]] const std::string& file() const { return path; }

private:
    static constexpr std::uint64_t Step = std::numeric_limits<std::uint64_t>::max() / Records + 1;
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("brivok-large-book-" + std::to_string(std::random_device{}())))
                                 .string();
};

/// A complete book move, including opening the file.
void selectMove(benchmark::State& state, const std::string& name) {
    OpeningBook book(name);
    Board board = theBoard;
    board.NewGame();
    if (book.SelectMove(board) == NoMove) {
        state.SkipWithError("the book does not answer");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(book.SelectMove(board));
    state.SetItemsProcessed(state.iterations());
}

void bookSelectMove(benchmark::State& state) {
    prepareEngine();
    selectMove(state, BRIVOK_DEFAULT_BOOK);
}
BENCHMARK(bookSelectMove);

void bookSelectMoveOfTenMillion(benchmark::State& state) {
    prepareEngine();
    static const LargeBook large;
    selectMove(state, large.file());
}
BENCHMARK(bookSelectMoveOfTenMillion);

}  // namespace
}  // namespace brivok
