// Lookups in the default book, with its file cached by the system.

#include <benchmark/benchmark.h>

#include "book/opening_book.h"
#include "engine_positions.h"

namespace brivok {
namespace {

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

/// A complete book move, including opening the file.
void bookSelectMove(benchmark::State& state) {
    prepareEngine();
    OpeningBook book(BRIVOK_DEFAULT_BOOK);
    Board board = theBoard;
    board.NewGame();
    if (book.SelectMove(board) == NoMove) {
        state.SkipWithError("the book does not answer");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(book.SelectMove(board));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(bookSelectMove);

}  // namespace
}  // namespace brivok
