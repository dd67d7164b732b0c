// Endgame tables: indexing a position, probing through the cache, decoding compressed files.
// BRIVOK_TABLES names a folder of plain tables, BRIVOK_PACKED one of compressed tables; a benchmark
// whose folder is not set is skipped.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "board/board.h"
#include "egtb/block_cache.h"
#include "egtb/registration.h"
#include "egtb/signature.h"
#include "egtb/table_files.h"
#include "egtb/table_index.h"
#include "egtb/tablebase_probe.h"
#include "engine_positions.h"
#include "shell/base/settings.h"

namespace brivok {
namespace {

constexpr std::size_t PositionCount = 20'000;
constexpr int FirstFourMen = 6;
constexpr int LastFourMen = 35;
constexpr std::uint32_t WholeSet = 256 * Megabyte;  ///< holds every chunk of the set
constexpr std::uint32_t SmallCache = Megabyte;

struct Sample {
    int id;
    unsigned side;
    TablePosition position;
};

/// Random positions from all tables with these ids; each has an entry in its table.
std::vector<Sample> samples(int firstId, int lastId) {
    std::mt19937_64 generator(1);
    std::vector<Sample> drawn;
    while (drawn.size() < PositionCount) {
        Sample sample{};
        sample.id = std::uniform_int_distribution<int>(firstId, lastId)(generator);
        sample.side = generator() % 2;
        const std::uint64_t index = generator() % tableIndexCount(sample.id, sample.side);
        if (tablePosition(sample.id, sample.side, index, sample.position)) drawn.push_back(sample);
    }
    return drawn;
}

/// The FEN of a sample.
std::string fenOf(const Sample& sample) {
    std::array<char, 64> men;
    men.fill('1');
    const TablebaseDescriptor& table = descriptorOf(sample.id);
    const PieceCounts counts = countsOf(table.signature());
    const auto place = [&men](const PieceList& list, Side side, const std::uint8_t* each) {
        men[list[KingSlot]] = fenLetter(pieceOf(Kind::King, side));
        for (std::size_t kind = 0; kind < CountedKinds; ++kind) {
            for (std::size_t man = 0; man < each[kind]; ++man) {
                men[list[kind * SlotsPerType + man]] = fenLetter(pieceOf(TableKinds[kind], side));
            }
        }
    };
    place(sample.position.first, White, counts.data());
    place(sample.position.second, Black, counts.data() + CountedKinds);
    std::string fen;
    for (std::size_t rank = 8; rank-- > 0;) {
        fen.append(&men[rank * 8], 8);
        fen += rank > 0 ? "/" : sample.side == 0 ? " w - - 0 1" : " b - - 0 1";
    }
    return fen;
}

/// False, with the benchmark marked as skipped, if the variable is not set or its folder has no
/// tables.
bool openTables(benchmark::State& state, const char* variable, std::uint32_t cacheBytes) {
    prepareEngine();
    const char* const folder = std::getenv(variable);
    if (folder == nullptr) {
        state.SkipWithError((std::string(variable) + " names no folder").c_str());
        return false;
    }
    InitTablebases("", 0);
    InitTablebases(folder, cacheBytes);
    if (tablebases.tbMaxMen < 4) state.SkipWithError("no tables of four men");
    return tablebases.tbMaxMen >= 4;
}

void indexes(benchmark::State& state, int firstId, int lastId) {
    prepareEngine();
    const std::vector<Sample> drawn = samples(firstId, lastId);
    std::size_t next = 0;
    for (auto _ : state) {
        const Sample& s = drawn[next];
        next = next + 1 == drawn.size() ? 0 : next + 1;
        benchmark::DoNotOptimize(
            tableIndex(s.id, s.side, s.position.first, s.position.second, s.position.ep, 0));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(indexes, FourMen, FirstFourMen, LastFourMen);
BENCHMARK_CAPTURE(indexes, FiveMen, 36, 145);
BENCHMARK_CAPTURE(indexes, SixMen, 146, 440);

/// Complete probes from boards, in random order over all four-man tables.
void probes(benchmark::State& state, const char* variable, std::uint32_t cacheBytes) {
    if (!openTables(state, variable, cacheBytes)) return;
    static std::vector<Board> boards = [] {
        std::vector<Board> made;
        made.reserve(PositionCount / 10);
        for (const Sample& sample : samples(FirstFourMen, LastFourMen)) {
            if (made.size() == made.capacity()) break;
            theBoard.setPositionFromFen(fenOf(sample));
            made.push_back(theBoard);
        }
        return made;
    }();
    std::int32_t score = 0;
    for (const Board& board : boards) benchmark::DoNotOptimize(TablebaseProbe(board, 1, score));
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(TablebaseProbe(boards[next], 1, score));
        next = next + 1 == boards.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(probes, PlainWarm, "BRIVOK_TABLES", WholeSet);
BENCHMARK_CAPTURE(probes, PlainSmallCache, "BRIVOK_TABLES", SmallCache);
BENCHMARK_CAPTURE(probes, PackedWarm, "BRIVOK_PACKED", WholeSet);
BENCHMARK_CAPTURE(probes, PackedSmallCache, "BRIVOK_PACKED", SmallCache);

/// Reads every chunk of every table in the folder once, through a cache too small to keep any.
void decoding(benchmark::State& state) {
    if (!openTables(state, "BRIVOK_PACKED", SmallCache)) return;
    std::int64_t bytes = 0;
    for (auto _ : state) {
        for (const TablebaseDescriptor& table : tablebaseDescriptors) {
            for (unsigned side = 0; side < 2; ++side) {
                if (tableSide(table.id, side) == nullptr) continue;
                const std::uint64_t size = table.size[side];
                for (std::uint64_t at = 0; at < size; at += ChunkBytes) {
                    benchmark::DoNotOptimize(blockCache.ReadCacheByte(
                        table.id, side, static_cast<std::uint32_t>(at / ChunkBytes), 0));
                }
                bytes += static_cast<std::int64_t>(size);
            }
        }
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(decoding)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace brivok
