#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <span>

#include "board/board.h"

/// Shared by the micro-benchmarks: an initialised engine and boards to work on. The set is small
/// enough to stay in caches and branch predictors, so the times are for warm code.
namespace brivok {

/// Takes effect once per process. Tables have their default sizes.
void prepareEngine();

/// The signature positions of normal chess, so that the variant need not change, from openings to
/// bare endgames. Call before making moves on them: this sets the usual castling home squares.
[[nodiscard]] std::span<Board> positions();

/// The positions in which the side to move is not in check.
[[nodiscard]] std::span<Board> quietPositions();

/// Positions in check, reached by the first checking moves from positions().
[[nodiscard]] std::span<Board> checkedPositions();

/// A legal move. The board is not owned.
struct BoardMove {
    Board* board;
    Move move;
};

/// All legal moves in positions().
[[nodiscard]] std::span<const BoardMove> legalMoves();

/// Watches the boards of a benchmark, which fails if they have changed when it ends.
class UnchangedBoards {
public:
    UnchangedBoards(benchmark::State& benchmarkState, std::span<Board> watched);
    UnchangedBoards(const UnchangedBoards&) = delete;
    UnchangedBoards& operator=(const UnchangedBoards&) = delete;
    ~UnchangedBoards();

private:
    benchmark::State& state;
    std::span<Board> boards;
    std::uint64_t before;
};

/// Reports the time per item as "each" when an iteration covers several.
inline void tellTimeOfEach(benchmark::State& state, std::size_t items) {
    using benchmark::Counter;
    state.counters["each"] =
        Counter(static_cast<double>(items), Counter::kIsIterationInvariantRate | Counter::kInvert);
}

/// The next number of a fixed pseudo-random sequence (Steele, Lea and Flood, "Fast splittable
/// pseudorandom number generators", 2014).
[[nodiscard]] inline std::uint64_t nextRandom(std::uint64_t& seed) {
    std::uint64_t value = seed += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

}  // namespace brivok
