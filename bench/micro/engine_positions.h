#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <span>

#include "board/board.h"

/// What the micro-benchmarks share: a started engine, and boards to work on. The set is small
/// enough for caches and branch prediction to know it: the times are those of warm code.
namespace brivok {

/// Once a process; tables of the default sizes.
void prepareEngine();

/// The positions of the signature that are normal chess, so that the rules need no switching: from
/// openings to bare endgames. Call it before moves are made on them: castling has the usual home
/// squares then.
[[nodiscard]] std::span<Board> positions();

/// Those in which the side to move is not in check.
[[nodiscard]] std::span<Board> quietPositions();

/// Positions in check: what the first checking moves of positions() lead to.
[[nodiscard]] std::span<Board> checkedPositions();

/// A legal move of a board, which is not owned.
struct BoardMove {
    Board* board;
    Move move;
};

/// All legal moves of positions().
[[nodiscard]] std::span<const BoardMove> legalMoves();

/// Watches over boards that a benchmark lets work: it fails when they are not afterwards what they
/// were before.
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

/// Tells the time of one item as "each", when an iteration goes through so many.
inline void tellTimeOfEach(benchmark::State& state, std::size_t items) {
    using benchmark::Counter;
    state.counters["each"] =
        Counter(static_cast<double>(items), Counter::kIsIterationInvariantRate | Counter::kInvert);
}

/// The next number of a fixed sequence that passes for random (Steele, Lea and Flood, "Fast
/// splittable pseudorandom number generators", 2014).
[[nodiscard]] inline std::uint64_t nextRandom(std::uint64_t& seed) {
    std::uint64_t value = seed += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

}  // namespace brivok
