#include "hash/transposition_table.h"

#include <algorithm>

#include "hash/table_report.h"
#include "shell/base/settings.h"

namespace brivok {

TranspositionTable transpositionTable;

namespace {

constexpr std::uint64_t MaxBuckets = std::uint64_t{1} << 31U;
constexpr std::uint64_t SlotsPerBucket = 2;
constexpr std::uint32_t Generations = 7;

/// If an entry at most this much shallower (1/16 ply) failed low, no null move is tried.
constexpr int NullHintDepth = 48;

/// The info word of a slot, from the low bit: bound (2 bits), mate threat (1), generation (3),
/// depth in 1/16 ply (10), score (16, signed).
constexpr std::uint32_t packInfo(Bound bound, bool mateThreat, std::uint32_t generation, int depth,
                                 int score) {
    return bound | std::uint32_t{mateThreat} << 2U | generation << 3U |
           (static_cast<std::uint32_t>(depth) & 1023U) << 6U |
           static_cast<std::uint32_t>(score) << 16U;
}
constexpr Bound boundOf(std::uint32_t info) { return static_cast<Bound>(info & 3U); }
constexpr bool mateThreatOf(std::uint32_t info) { return (info & 4U) != 0; }
constexpr std::uint32_t generationOf(std::uint32_t info) { return info >> 3U & 7U; }
constexpr int depthOf(std::uint32_t info) { return static_cast<int>(info >> 6U & 1023U); }
constexpr int scoreOf(std::uint32_t info) { return static_cast<std::int16_t>(info >> 16U); }

}  // namespace

void TranspositionTable::resize() {
    const std::uint64_t bytes = std::uint64_t{settings.hashMB} << 19U;
    std::uint64_t count = 1;
    while (count * sizeof(Bucket) <= bytes) count *= 2;
    constexpr TableNames names{"main", "hash"};
    if (count > MaxBuckets || !buckets.allocate(count)) endForRefusedMemory(names);
    bucketCount = static_cast<std::uint32_t>(count);
    reportAllocation(names, count * SlotsPerBucket, count * sizeof(Bucket));
    forgetFill();
}

void TranspositionTable::clear() {
    buckets.clear();
    forgetFill();
}

void TranspositionTable::forgetFill() {
    std::fill(std::begin(slotsOfGeneration), std::end(slotsOfGeneration), 0U);
    alwaysSlotsUsed = 0;
}

void TranspositionTable::nextGeneration() { generation = generation % Generations + 1; }

TranspositionTable::Probe TranspositionTable::probe(std::uint64_t key, int searchPly, int beta,
                                                    int depth, Found& found, bool& allowNull) {
    found.mateThreat = false;
    found.move = NoMove;

    const Bucket& bucket = bucketOf(key);
    std::uint32_t info = 0;
    if (bucket.deepKey == key && generationOf(bucket.deepInfo) == generation) {
        info = bucket.deepInfo;
        found.move = bucket.deepMove;
    } else if (bucket.alwaysKey == key) {
        info = bucket.alwaysInfo;
        found.move = bucket.alwaysMove;
    } else {
        return Probe::None;
    }

    found.mateThreat = mateThreatOf(info);
    const int score = scoreOf(info);
    if (boundOf(info) == BoundUpper && depth - NullHintDepth <= depthOf(info) && score < beta) {
        allowNull = false;
    }
    if (depthOf(info) < depth) return Probe::TooShallow;

    found.score = score;
    if (score > MateBound) {
        found.score = score - searchPly;
    } else if (score < -MateBound) {
        found.score = score + searchPly;
    }
    return static_cast<Probe>(boundOf(info));
}

void TranspositionTable::store(std::uint64_t key, int searchPly, int score, Bound bound, Move move,
                               bool mateThreat, int depth) {
    if (score > MateBound) {
        score += searchPly;
    } else if (score < -MateBound) {
        score -= searchPly;
    }

    Bucket& bucket = bucketOf(key);
    const std::uint32_t held = generationOf(bucket.deepInfo);
    if (held == generation && depthOf(bucket.deepInfo) > depth) {
        if (bucket.alwaysKey == 0) ++alwaysSlotsUsed;
        bucket.alwaysKey = key;
        bucket.alwaysMove = move;
        bucket.alwaysInfo = packInfo(bound, mateThreat, 0, depth, score);
        return;
    }
    if (held != generation) {
        if (held != 0) --slotsOfGeneration[held];
        ++slotsOfGeneration[generation];
    }
    bucket.deepKey = key;
    bucket.deepMove = move;
    bucket.deepInfo = packInfo(bound, mateThreat, generation, depth, score);
}

Move TranspositionTable::bestMove(const Board& board) const {
    const Bucket& bucket = bucketOf(board.hashKey);
    Move move = NoMove;
    if (bucket.deepKey == board.hashKey) {
        move = bucket.deepMove;
    } else if (bucket.alwaysKey == board.hashKey) {
        move = bucket.alwaysMove;
    }
    return move != NoMove && board.isMoveValid(move) ? move : NoMove;
}

unsigned TranspositionTable::fillPermille() const {
    const double slots = bucketCount + 1.0;
    const auto permille = [slots](std::uint32_t used) {
        return static_cast<unsigned>(used * 1000.0 / slots);
    };
    return static_cast<unsigned>(
        (permille(alwaysSlotsUsed) + permille(slotsOfGeneration[generation])) * 0.5);
}

}  // namespace brivok
