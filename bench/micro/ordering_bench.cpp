// Ordering of moves. "each" is the time per list.

#include <benchmark/benchmark.h>

#include <memory>
#include <span>

#include "engine_positions.h"
#include "search/ordered_moves.h"

namespace brivok {
namespace {

/// Scores every position's list and picks at most `picks` moves from it.
void order(benchmark::State& state, void (*generate)(Board&, Move*), int picks) {
    const std::span<Board> boards = quietPositions();
    const auto list = std::make_unique<OrderedMoves>();
    for (auto _ : state) {
        for (Board& board : boards) {
            generate(board, list->moves);
            list->count = board.moveCount;
            list->restart();
            for (int i = 0; i < list->count; ++i) list->score(board, 0);
            Move move = list->next(board);
            for (int i = 1; i < picks && move != NoMove; ++i) move = list->next(board);
            benchmark::DoNotOptimize(move);
        }
    }
    tellTimeOfEach(state, boards.size());
}
BENCHMARK_CAPTURE(order, AllCaptures, generateCaptures, MaxMoves);
BENCHMARK_CAPTURE(order, FirstMove, generateMoves, 1);
BENCHMARK_CAPTURE(order, AllMoves, generateMoves, MaxMoves);

}  // namespace
}  // namespace brivok
