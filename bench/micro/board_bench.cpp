// Making and unmaking moves, exchanges, checks, and reading FEN. Each iteration covers the whole
// set; "each" is the time per move or position.

#include <benchmark/benchmark.h>

#include <vector>

#include "../signature.h"
#include "board/board.h"
#include "engine_positions.h"

namespace brivok {
namespace {

void makeUnmake(benchmark::State& state) {
    const UnchangedBoards watch(state, positions());
    const auto moves = legalMoves();
    for (auto _ : state) {
        for (const BoardMove& next : moves) {
            next.board->makeMove(next.move);
            benchmark::ClobberMemory();
            next.board->unmakeMove();
        }
    }
    tellTimeOfEach(state, moves.size());
}
BENCHMARK(makeUnmake);

/// What the search does with each pseudo-legal move.
void makeTestUnmake(benchmark::State& state) {
    const UnchangedBoards watch(state, positions());
    const auto moves = legalMoves();
    for (auto _ : state) {
        for (const BoardMove& next : moves) {
            next.board->makeMove(next.move);
            benchmark::DoNotOptimize(next.board->moverInCheck());
            next.board->unmakeMove();
        }
    }
    tellTimeOfEach(state, moves.size());
}
BENCHMARK(makeTestUnmake);

void see(benchmark::State& state) {
    std::vector<BoardMove> captures;
    for (const BoardMove& next : legalMoves()) {
        if (moveCapture(next.move) != Empty) captures.push_back(next);
    }
    for (auto _ : state) {
        for (const BoardMove& next : captures) {
            benchmark::DoNotOptimize(next.board->see(opposite(next.board->sideToMove),
                                                     moveTo(next.move), moveFrom(next.move),
                                                     movePromotion(next.move)));
        }
    }
    tellTimeOfEach(state, captures.size());
}
BENCHMARK(see);

void inCheck(benchmark::State& state, std::span<Board> (*set)()) {
    const auto boards = set();
    for (auto _ : state) {
        for (const Board& board : boards) benchmark::DoNotOptimize(board.inCheck());
    }
    tellTimeOfEach(state, boards.size());
}
BENCHMARK_CAPTURE(inCheck, Quiet, quietPositions);
BENCHMARK_CAPTURE(inCheck, Checked, checkedPositions);

void setPositionFromFen(benchmark::State& state) {
    prepareEngine();
    const auto lines = signaturePositions().first(positions().size());
    for (auto _ : state) {
        for (const TestPosition& line : lines) {
            theBoard.setPositionFromFen(line.fen);
            benchmark::ClobberMemory();
        }
    }
    tellTimeOfEach(state, lines.size());
}
BENCHMARK(setPositionFromFen);

}  // namespace
}  // namespace brivok
