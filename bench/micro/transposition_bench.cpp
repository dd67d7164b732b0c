// The transposition table: one that fits in the processor's caches, and one that does not. Keys are
// pseudo-random, and a table is filled before it is measured. The calls do not depend on each
// other; the search, which prefetches, comes close to that.

#include <benchmark/benchmark.h>

#include "engine_positions.h"
#include "hash/transposition_table.h"
#include "shell/base/settings.h"

namespace brivok {
namespace {

constexpr std::int64_t Small = 1;  ///< megabytes; between half and all of it is used
constexpr std::int64_t Large = 256;
constexpr int DeepestEntry = 127;  ///< in 1/16 ply
constexpr std::uint64_t FirstSeed = 1;

/// Everything stored derives from the key.
void storeEntry(TranspositionTable& table, std::uint64_t key) {
    const int depth = static_cast<int>(key >> 40U) & DeepestEntry;
    table.store(key, 1, depth, BoundLower, static_cast<Move>(key >> 32U), false, depth);
}

/// Stores as many entries as there are slots.
void fill(TranspositionTable& table) {
    table.nextGeneration();
    std::uint64_t seed = FirstSeed;
    for (std::uint64_t i = 0; i < 2ULL * table.size(); ++i) storeEntry(table, nextRandom(seed));
}

/// A full table of its own; restores the setting.
class FullTable {
public:
    explicit FullTable(std::int64_t megabytes) {
        prepareEngine();
        const std::uint32_t before = settings.hashMB;
        settings.hashMB = static_cast<std::uint32_t>(megabytes);
        table.resize();
        settings.hashMB = before;
        fill(table);
    }
    TranspositionTable table;
};

void store(benchmark::State& state) {
    FullTable full(state.range(0));
    std::uint64_t seed = ~FirstSeed;
    for (auto _ : state) {
        storeEntry(full.table, nextRandom(seed));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(store)->Name("ttStore")->Arg(Small)->Arg(Large);

/// Looks up what was stored, in the same order; some entries have been overwritten.
void probe(benchmark::State& state) {
    FullTable full(state.range(0));
    const std::uint64_t stored = 2ULL * full.table.size();
    std::uint64_t seed = FirstSeed;
    std::uint64_t next = 0;
    std::int64_t hits = 0;
    TranspositionTable::Found found;
    for (auto _ : state) {
        if (next++ == stored) {
            seed = FirstSeed;
            next = 1;
        }
        bool allowNull = true;
        hits += full.table.probe(nextRandom(seed), 1, 0, 0, found, allowNull) !=
                TranspositionTable::Probe::None;
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["hits"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK(probe)->Name("ttProbe")->Arg(Small)->Arg(Large);

}  // namespace
}  // namespace brivok
