#include "distance_choice.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <vector>

#include "block_parser.h"
#include "parallel.h"

namespace brivok::tables {
namespace {

/// Positions of a block whose bytes are searched for in all of the block before them; few enough to
/// be counted in a byte.
constexpr std::size_t ProbeCount = 200;

/// Bytes that must repeat there.
constexpr std::size_t Telling = 4;

/// Estimated bits: of a byte beyond its share in the sample, and of a match beyond the logarithm of
/// its length.
constexpr double LiteralBits = 1.5;
constexpr double MatchBits = 5;

/// Up to ProbeCount positions from all over a block, none within a run of a single byte.
std::vector<std::size_t> probesOf(ByteSpan block) {
    std::vector<std::size_t> places;
    for (std::size_t i = 1; i + Telling <= block.size(); ++i) {
        const auto begin = block.begin() + static_cast<std::ptrdiff_t>(i) - 1;
        if (!std::equal(begin, begin + Telling, begin + 1)) places.push_back(i);
    }
    if (places.size() <= ProbeCount) return places;
    std::vector<std::size_t> probes;
    for (std::size_t i = 0; i < ProbeCount; ++i) {
        probes.push_back(places[i * places.size() / ProbeCount]);
    }
    return probes;
}

/// How many of a block's probes repeat the bytes at each distance, from BlockSize down.
using ProbeHits = std::array<std::uint8_t, BlockSize>;

/// Adds the distances at which the bytes at `place` occurred before.
void addHits(ByteSpan block, std::size_t place, ProbeHits& hits) {
    static_assert(Telling == 4);
    const std::uint8_t* former = block.data();
    const std::uint8_t* sought = former + place;
    const std::array<std::uint8_t, Telling> wanted = {sought[0], sought[1], sought[2], sought[3]};
    // From the start of the block on. Written so that compilers vectorise it.
    std::uint8_t* hit = hits.data() + (BlockSize - place);
    for (std::size_t i = 0; i < place; ++i) {
        const auto differences =
            static_cast<std::uint8_t>((former[i] ^ wanted[0]) | (former[i + 1] ^ wanted[1]) |
                                      (former[i + 2] ^ wanted[2]) | (former[i + 3] ^ wanted[3]));
        hit[i] = static_cast<std::uint8_t>(hit[i] + (differences == 0 ? 1 : 0));
    }
}

/// The most frequent distances above 1.
std::vector<std::uint16_t> candidates(ByteSpan sample, std::size_t count, unsigned threads) {
    std::vector<std::uint64_t> found(BlockSize, 0);
    std::mutex merging;
    const auto probeSome = [&](std::uint64_t begin, std::uint64_t end) {
        for (std::uint64_t number = begin; number < end; ++number) {
            const ByteSpan block = blockOf(sample, number);
            ProbeHits hits{};
            for (const std::size_t place : probesOf(block)) addHits(block, place, hits);
            const std::lock_guard lock(merging);
            for (std::size_t i = 1; i < BlockSize; ++i) found[BlockSize - i] += hits[i];
        }
    };
    inParallel(threads, blocksIn(sample.size()), probeSome, 1);

    std::vector<std::uint16_t> distances;
    for (std::uint16_t distance = 2; distance < BlockSize; ++distance) {
        distances.push_back(distance);
    }
    std::stable_sort(
        distances.begin(), distances.end(),
        [&](std::uint16_t left, std::uint16_t right) { return found[left] > found[right]; });
    distances.resize(count);
    return distances;
}

/// Bytes of the sample that repeat those at some distance.
struct Run {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
};

/// The low bits of eight bytes, whose other bits are 0; the first byte's lowest.
std::uint64_t lowBits(const std::uint8_t* bytes) {
    // The product moves each bit to its place in the highest byte, and none of its terms meet.
    constexpr std::uint64_t Gather =
        std::endian::native == std::endian::little ? 0x0102'0408'1020'4080 : 0x8040'2010'0804'0201;
    std::uint64_t eight = 0;
    std::memcpy(&eight, bytes, sizeof eight);
    return eight * Gather >> 56;
}

/// Appends the runs of at least two bytes, numbered from `start` for the first byte of the block.
void appendRuns(ByteSpan block, std::uint32_t start, std::uint16_t distance,
                std::vector<Run>& runs) {
    constexpr std::size_t WordBits = 64;
    constexpr std::size_t WordCount = BlockSize / WordBits + 1;
    if (block.size() <= distance) return;
    std::array<std::uint8_t, WordCount * WordBits> repeated;
    std::fill_n(repeated.begin(), distance, std::uint8_t{0});
    for (std::size_t i = distance; i < block.size(); ++i) {
        repeated[i] = block[i] == block[i - distance] ? 1 : 0;
    }
    std::fill(repeated.begin() + static_cast<std::ptrdiff_t>(block.size()), repeated.end(),
              std::uint8_t{0});
    const auto wordAt = [&](std::size_t number) {
        std::uint64_t word = 0;
        for (std::size_t i = 0; i < 8; ++i) {
            word |= lowBits(&repeated[number * WordBits + i * 8]) << 8 * i;
        }
        return word;
    };

    // In `pairs` a bit is set where this byte and the next repeat. Where it differs from the bit
    // before, a run begins or has one byte left.
    std::uint64_t former = 0;
    std::uint64_t word = wordAt(distance / WordBits);
    bool inside = false;
    for (std::size_t number = distance / WordBits; number < WordCount; ++number) {
        const std::uint64_t next = number + 1 < WordCount ? wordAt(number + 1) : 0;
        const std::uint64_t pairs = word & (word >> 1 | next << 63);
        std::uint64_t edges = pairs ^ (pairs << 1 | former >> 63);
        for (; edges != 0; edges &= edges - 1) {
            const auto place = start + static_cast<std::uint32_t>(number * WordBits) +
                               static_cast<std::uint32_t>(std::countr_zero(edges));
            if (inside) {
                runs.back().end = place + 1;
            } else {
                runs.push_back({place, 0});
            }
            inside = !inside;
        }
        former = pairs;
        word = next;
    }
}

std::vector<Run> runsAt(ByteSpan sample, std::uint16_t distance) {
    std::vector<Run> runs;
    for (std::size_t number = 0; number < blocksIn(sample.size()); ++number) {
        appendRuns(blockOf(sample, number), static_cast<std::uint32_t>(number * BlockSize),
                   distance, runs);
    }
    return runs;
}

/// A rough parse: at each position a byte or the longest match at any of the distances.
class RoughParser {
public:
    explicit RoughParser(ByteSpan itsSample)
        : sample(itsSample),
          longest(sample.size(), 0),
          taken(sample.size(), 0),
          boundaries(sample.size(), 0),
          costs(sample.size() + 1, 0) {
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

    /// About how much cheaper the sample gets with these runs: each as a match in place of the
    /// tokens that begin within it, or not at all.
    [[nodiscard]] std::int64_t gain(const std::vector<Run>& runs) const {
        std::int64_t sum = 0;
        for (const Run& run : runs) {
            const std::uint32_t begin = std::min(boundaries[run.begin], run.end);
            const std::int32_t saved = costs[begin] - costs[run.end] - matchCosts[run.end - begin];
            sum += std::max(saved, 0);
        }
        return sum;
    }

    void add(const std::vector<Run>& runs) {
        for (const Run& run : runs) {
            for (std::uint32_t place = run.begin; place < run.end; ++place) {
                longest[place] =
                    std::max(longest[place], static_cast<std::uint16_t>(run.end - place));
            }
        }
        parse();
    }

private:
    static constexpr std::int32_t NoMatch = 1 << 29;  ///< more than any sample costs

    [[nodiscard]] static std::int32_t costOf(double bits) {
        return static_cast<std::int32_t>(std::lround(bits * CostUnit));
    }

    void parse() {
        for (std::size_t place = sample.size(); place-- > 0;) {
            const std::uint16_t length = longest[place];
            const std::int32_t literal = literalCosts[sample[place]] + costs[place + 1];
            const std::int32_t match = matchCosts[length] + costs[place + length];
            costs[place] = std::min(literal, match);
            taken[place] = match < literal ? length : std::uint16_t{1};
        }
        for (std::uint32_t place = 0; place < sample.size();) {
            const std::uint32_t end = place + taken[place];
            boundaries[place] = place;
            while (++place < end) boundaries[place] = end;
        }
    }

    ByteSpan sample;
    // By position:
    std::vector<std::uint16_t> longest;     ///< match with the distances so far
    std::vector<std::uint16_t> taken;       ///< bytes in the first token of the cheapest rest
    std::vector<std::uint32_t> boundaries;  ///< where the next token of the cheapest parse begins
    std::vector<std::int32_t> costs;        ///< of the cheapest rest
    std::array<std::int32_t, LiteralCount> literalCosts{};
    std::array<std::int32_t, BlockSize + 1> matchCosts{};
};

}  // namespace

Distances chooseDistances(ByteSpan sample, std::size_t candidateCount, unsigned threads) {
    struct Candidate {
        std::uint16_t distance = 0;
        std::vector<Run> runs{};
        std::int64_t gain = 0;
        std::size_t slot = 0;  ///< the slot for which the gain was computed
    };
    std::vector<Candidate> rest;
    for (const std::uint16_t distance : candidates(sample, candidateCount, threads)) {
        rest.push_back({.distance = distance});
    }
    RoughParser parser(sample);
    Distances chosen{};
    chosen.fill(1);
    parser.add(runsAt(sample, 1));
    const auto examine = [&](std::uint64_t begin, std::uint64_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            rest[i].runs = runsAt(sample, rest[i].distance);
            rest[i].gain = parser.gain(rest[i].runs);
        }
    };
    inParallel(threads, rest.size(), examine, 1);

    // Gains shrink as distances are added, so an old gain is an upper bound. A candidate that still
    // leads after its gain has been updated beats all others.
    for (std::size_t slot = 1; slot < SlotCount; ++slot) {
        const auto leader = [&rest] {
            return std::max_element(
                rest.begin(), rest.end(),
                [](const auto& left, const auto& right) { return left.gain < right.gain; });
        };
        auto best = leader();
        for (; best->slot != slot; best = leader()) {
            best->gain = parser.gain(best->runs);
            best->slot = slot;
        }
        chosen[slot] = best->distance;
        parser.add(best->runs);
        rest.erase(best);
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

}  // namespace brivok::tables
