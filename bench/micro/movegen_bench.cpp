// Move generation. Each iteration covers the whole set; "each" is the time per position.

#include <benchmark/benchmark.h>

#include <vector>

#include "engine_positions.h"
#include "movegen/generate.h"
#include "movegen/legal_moves.h"
#include "movegen/legality.h"
#include "movegen/move_count.h"

namespace brivok {
namespace {

/// Runs the generator on each board of a set and reports the mean number of moves.
void generate(benchmark::State& state, std::span<Board> (*set)(),
              void (*generator)(Board&, Move*)) {
    const auto boards = set();
    const UnchangedBoards watch(state, boards);
    MoveList list;
    std::int64_t moves = 0;
    for (auto _ : state) {
        for (Board& board : boards) {
            board.moveCount = 0;
            generator(board, list);
            benchmark::DoNotOptimize(list);
            moves += board.moveCount;
        }
    }
    tellTimeOfEach(state, boards.size());
    state.counters["moves"] =
        static_cast<double>(moves) /
        (static_cast<double>(state.iterations()) * static_cast<double>(boards.size()));
}
BENCHMARK_CAPTURE(generate, Captures, quietPositions, generateCaptures);
BENCHMARK_CAPTURE(generate, NonCaptures, quietPositions, generateNonCaptures);
BENCHMARK_CAPTURE(generate, PseudoLegal, quietPositions, generateMoves);
BENCHMARK_CAPTURE(generate, Evasions, checkedPositions, generateEvasions);

/// Generates the moves, then makes, tests and unmakes each.
void countLegal(benchmark::State& state) {
    const auto boards = positions();
    const UnchangedBoards watch(state, boards);
    for (auto _ : state) {
        for (Board& board : boards) benchmark::DoNotOptimize(countLegalMoves(board));
    }
    tellTimeOfEach(state, boards.size());
}
BENCHMARK(countLegal);

/// Pins and checks.
void findLegality(benchmark::State& state) {
    const auto boards = positions();
    for (auto _ : state) {
        for (const Board& board : boards) benchmark::DoNotOptimize(Legality(board));
    }
    tellTimeOfEach(state, boards.size());
}
BENCHMARK(findLegality);

/// Asks for each legal move, by the pins and checks of its position.
void allowMoves(benchmark::State& state) {
    struct Question {
        Legality legality;
        Move move;
    };
    std::vector<Question> questions;
    for (const BoardMove& next : legalMoves()) {
        questions.push_back({Legality(*next.board), next.move});
    }
    for (auto _ : state) {
        for (const auto& [legality, move] : questions) {
            benchmark::DoNotOptimize(legality.allows(move));
        }
    }
    tellTimeOfEach(state, questions.size());
}
BENCHMARK(allowMoves);

/// Counts legal moves without making them.
void countInBulk(benchmark::State& state) {
    const auto boards = quietPositions();
    for (auto _ : state) {
        for (const Board& board : boards) {
            benchmark::DoNotOptimize(countMoves(board, Legality(board)));
        }
    }
    tellTimeOfEach(state, boards.size());
}
BENCHMARK(countInBulk);

}  // namespace
}  // namespace brivok
