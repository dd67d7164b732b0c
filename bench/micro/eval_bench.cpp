// The evaluation with a hit in its table, with a hit in the pawn table only, and with neither. To
// force a miss, the record is spoilt before each call, so the table itself stays in the cache. Each
// iteration covers the whole set; "each" is the time per position.

#include <benchmark/benchmark.h>

#include "engine_positions.h"
#include "eval/evaluate.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/search_stats.h"

namespace brivok {
namespace {

enum class Finds { Score, Pawns, Nothing };

void evaluate(benchmark::State& state, Finds finds) {
    const auto boards = positions();
    for (const Board& board : boards) benchmark::DoNotOptimize(Evaluate(board, 0, 0));
    searchStats = {};
    for (auto _ : state) {
        for (const Board& board : boards) {
            if (finds != Finds::Score) evalHashTable.Find(board.hashKey).key = ~board.hashKey;
            if (finds == Finds::Nothing) pawnHashTable.Find(board.pawnKey).key = ~board.pawnKey;
            benchmark::DoNotOptimize(Evaluate(board, 0, 0));
        }
    }
    tellTimeOfEach(state, boards.size());
    const bool asMeant = (searchStats.evalHashHits != 0) == (finds == Finds::Score) &&
                         (searchStats.pawnHashHits != 0) == (finds == Finds::Pawns);
    if (!asMeant) state.SkipWithError("the tables have answered otherwise");
}
BENCHMARK_CAPTURE(evaluate, BothTables, Finds::Score);
BENCHMARK_CAPTURE(evaluate, PawnTable, Finds::Pawns);
BENCHMARK_CAPTURE(evaluate, NoTable, Finds::Nothing);

}  // namespace
}  // namespace brivok
