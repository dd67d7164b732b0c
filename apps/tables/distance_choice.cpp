#include "distance_choice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "block_parser.h"
#include "parallel.h"

namespace brivok::tables {
namespace {

/// Number of distances that are examined closely.
constexpr std::size_t CandidateCount = 256;

/// Candidates whose gains are updated at a time.
constexpr std::size_t RefreshSize = 4;

/// Shortest repetition that counts.
constexpr std::size_t Telling = 4;

/// Estimated bits: of a byte beyond its share in the sample, and of a match beyond the logarithm of
/// its length.
constexpr double LiteralBits = 1.5;
constexpr double MatchBits = 5;

/// Number of positions where `Telling` bytes repeat those at a distance, except where `inRun` is
/// set.
unsigned repetitions(ByteSpan block, const std::uint8_t* inRun, std::size_t distance) {
    static_assert(Telling == 4);
    if (block.size() < distance + Telling) return 0;
    const std::uint8_t* former = block.data();
    const std::uint8_t* later = former + distance;
    const std::uint8_t* idle = inRun + distance;
    const std::size_t count = block.size() - distance - Telling + 1;
    unsigned sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        // Written so that compilers vectorise it.
        const auto differences = static_cast<std::uint8_t>(
            idle[i] | (later[i] ^ former[i]) | (later[i + 1] ^ former[i + 1]) |
            (later[i + 2] ^ former[i + 2]) | (later[i + 3] ^ former[i + 3]));
        sum += differences == 0 ? 1 : 0;
    }
    return sum;
}

/// The most frequent distances above 1, ignoring runs of a single byte.
std::vector<std::uint16_t> candidates(ByteSpan sample, unsigned threads) {
    Bytes inRun(sample.size(), 0);
    std::size_t run = 0;
    for (std::size_t i = sample.size(); i-- > 1;) {
        run = sample[i] == sample[i - 1] ? run + 1 : 0;
        inRun[i] = run >= Telling ? 1 : 0;
    }

    std::vector<std::uint64_t> found(BlockSize, 0);
    const auto countRepetitions = [&](std::uint64_t begin, std::uint64_t end) {
        for (std::size_t distance = std::max<std::size_t>(begin, 2); distance < end; ++distance) {
            for (std::size_t number = 0; number < blocksIn(sample.size()); ++number) {
                found[distance] += repetitions(blockOf(sample, number),
                                               inRun.data() + number * BlockSize, distance);
            }
        }
    };
    inParallel(threads, BlockSize, countRepetitions, 64);

    std::vector<std::uint16_t> distances;
    for (std::uint16_t distance = 2; distance < BlockSize; ++distance) {
        distances.push_back(distance);
    }
    std::stable_sort(
        distances.begin(), distances.end(),
        [&](std::uint16_t left, std::uint16_t right) { return found[left] > found[right]; });
    distances.resize(CandidateCount);
    return distances;
}

/// A rough parse: at each position a byte or the longest match at any of the distances.
class RoughParser {
public:
    explicit RoughParser(ByteSpan itsSample) : sample(itsSample), longest(sample.size(), 0) {
        std::array<double, LiteralCount> counts{};
        for (const std::uint8_t byte : sample) counts[byte] += 1;
        for (std::size_t byte = 0; byte < LiteralCount; ++byte) {
            const double share = (counts[byte] + 0.5) / (static_cast<double>(sample.size()) + 1);
            literalCosts[byte] = costOf(LiteralBits - std::log2(share));
        }
        matchCosts[0] = NoMatch;
        for (unsigned length = 1; length <= BlockSize; ++length) {
            matchCosts[length] = costOf(MatchBits + std::log2(static_cast<double>(length)));
        }
    }

    /// Cost of the sample with the distances chosen so far and this one.
    [[nodiscard]] std::int64_t costWith(std::uint16_t distance) const {
        std::int64_t sum = 0;
        std::array<std::int32_t, BlockSize + 1> costs{};
        for (std::size_t number = 0; number < blocksIn(sample.size()); ++number) {
            const ByteSpan block = blockOf(sample, number);
            const std::uint16_t* former = &longest[number * BlockSize];
            std::int32_t next = 0;
            costs[block.size()] = 0;
            forEachRun(block, distance, [&](std::size_t place, unsigned run) {
                const unsigned length = std::max<unsigned>(run, former[place]);
                const std::int32_t literal = literalCosts[block[place]] + next;
                const std::int32_t match = matchCosts[length] + costs[place + length];
                next = std::min(literal, match);
                costs[place] = next;
            });
            sum += next;
        }
        return sum;
    }

    void add(std::uint16_t distance) {
        for (std::size_t number = 0; number < blocksIn(sample.size()); ++number) {
            std::uint16_t* former = &longest[number * BlockSize];
            forEachRun(blockOf(sample, number), distance, [&](std::size_t place, unsigned run) {
                std::uint16_t& length = former[place];
                length = std::max(length, static_cast<std::uint16_t>(run));
            });
        }
    }

private:
    static constexpr std::int32_t NoMatch = 1 << 20;

    [[nodiscard]] static std::int32_t costOf(double bits) {
        return static_cast<std::int32_t>(std::lround(bits * CostUnit));
    }

    /// From the end of the block: how many bytes repeat those at the distance.
    template <typename Visit>
    static void forEachRun(ByteSpan block, std::uint16_t distance, Visit visit) {
        unsigned run = 0;
        std::size_t place = block.size();
        while (place > distance) {
            --place;
            const bool same = block[place] == block[place - distance];
            run = (run + 1) * static_cast<unsigned>(same);
            visit(place, run);
        }
        while (place > 0) visit(--place, 0);
    }

    ByteSpan sample;
    std::vector<std::uint16_t> longest;  ///< match at each position, with the distances so far
    std::array<std::int32_t, LiteralCount> literalCosts{};
    std::array<std::int32_t, BlockSize + 1> matchCosts{};
};

}  // namespace

Distances chooseDistances(ByteSpan sample, unsigned threads) {
    struct Candidate {
        std::uint16_t distance = 0;
        std::int64_t gain = 0;
        std::size_t slot = 0;  ///< the slot for which the gain was computed
    };
    std::vector<Candidate> rest;
    for (const std::uint16_t distance : candidates(sample, threads)) rest.push_back({distance});

    RoughParser parser(sample);
    Distances chosen{};
    chosen.fill(1);
    parser.add(1);
    std::int64_t cost = parser.costWith(1);
    const auto findGains = [&](std::size_t count, std::size_t slot) {
        const auto findSome = [&](std::uint64_t begin, std::uint64_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                if (rest[i].slot == slot) continue;
                rest[i].gain = cost - parser.costWith(rest[i].distance);
                rest[i].slot = slot;
            }
        };
        inParallel(threads, count, findSome, 1);
    };
    // Gains shrink as distances are added, so an old gain is an upper bound. A candidate that still
    // leads after its gain has been updated beats all others.
    const auto sortByGain = [&] {
        std::stable_sort(rest.begin(), rest.end(), [](const auto& left, const auto& right) {
            return left.gain > right.gain;
        });
    };
    findGains(rest.size(), 1);
    sortByGain();
    for (std::size_t slot = 1; slot < SlotCount; ++slot) {
        while (rest[0].slot != slot) {
            findGains(RefreshSize, slot);
            sortByGain();
        }
        chosen[slot] = rest[0].distance;
        cost -= rest[0].gain;
        parser.add(rest[0].distance);
        rest.erase(rest.begin());
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

}  // namespace brivok::tables
