#include "distance_choice.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

#include "parallel.h"

namespace brivok::tables {
namespace {

/// Distances whose repetitions are looked at more closely.
constexpr std::size_t CandidateCount = 512;

/// Shortest repetition that counts for a candidate.
constexpr std::size_t Telling = 4;

/// Estimates for a match, in bits: its symbol, and what each doubling of the length adds.
constexpr float MatchBits = 4.5F;
constexpr float DoublingBits = 1.0F;

/// The most frequent distances of repetitions that are no runs of one byte, ascending.
std::vector<std::uint16_t> candidates(ByteSpan sample, unsigned threads) {
    std::vector<std::uint8_t> isRun(sample.size(), 0);
    for (std::size_t i = 1; i < sample.size(); ++i) isRun[i] = sample[i] == sample[i - 1] ? 1 : 0;

    std::vector<std::uint64_t> found(BlockSize, 0);
    const auto countRepetitions = [&](std::uint64_t begin, std::uint64_t end) {
        for (std::size_t distance = std::max<std::size_t>(begin, 2); distance < end; ++distance) {
            for (std::size_t start = 0; start < sample.size(); start += BlockSize) {
                const ByteSpan block = blockOf(sample, start / BlockSize);
                const std::uint8_t* run = isRun.data() + start;
                unsigned sum = 0;
                for (std::size_t i = distance; i + Telling <= block.size(); ++i) {
                    const std::uint8_t* later = &block[i];
                    const std::uint8_t* former = &block[i - distance];
                    const bool same = (later[0] == former[0]) & (later[1] == former[1]) &
                                      (later[2] == former[2]) & (later[3] == former[3]);
                    const bool plain = (run[i] & run[i + 1] & run[i + 2] & run[i + 3]) != 0;
                    sum += same && !plain ? 1U : 0U;
                }
                found[distance] += sum;
            }
        }
    };
    inParallel(threads, BlockSize, countRepetitions, 64);

    std::vector<std::uint16_t> distances;
    for (std::uint16_t distance = 1; distance < BlockSize; ++distance) {
        distances.push_back(distance);
    }
    std::stable_sort(
        distances.begin() + 1, distances.end(),
        [&](std::uint16_t left, std::uint16_t right) { return found[left] > found[right]; });
    distances.resize(CandidateCount);
    return distances;
}

/// A rough parse: at each place a byte, or the longest match by any of the distances.
class RoughParser {
public:
    explicit RoughParser(ByteSpan itsSample) : sample(itsSample), longest(sample.size(), 0) {
        std::array<float, LiteralCount> counts{};
        for (const std::uint8_t byte : sample) counts[byte] += 1;
        for (std::size_t byte = 0; byte < LiteralCount; ++byte) {
            const float share = (counts[byte] + 0.5F) / (static_cast<float>(sample.size()) + 1);
            literalBits[byte] = 1.5F - std::log2(share);
        }
        for (unsigned length = 1; length <= BlockSize; ++length) {
            matchBits[length] = MatchBits + DoublingBits * std::log2(static_cast<float>(length));
        }
    }

    /// Bits of the sample with the distances so far and this one.
    [[nodiscard]] double bitsWith(std::uint16_t distance) const {
        double sum = 0;
        std::array<float, BlockSize + 1> bits{};
        for (std::size_t start = 0; start < sample.size(); start += BlockSize) {
            const ByteSpan block = blockOf(sample, start / BlockSize);
            bits[block.size()] = 0;
            forEachRun(block, distance, [&](std::size_t place, unsigned run) {
                const unsigned length = std::max<unsigned>(run, longest[start + place]);
                float best = literalBits[block[place]] + bits[place + 1];
                if (length != 0) best = std::min(best, matchBits[length] + bits[place + length]);
                bits[place] = best;
            });
            sum += static_cast<double>(bits[0]);
        }
        return sum;
    }

    void add(std::uint16_t distance) {
        for (std::size_t start = 0; start < sample.size(); start += BlockSize) {
            forEachRun(blockOf(sample, start / BlockSize), distance,
                       [&](std::size_t place, unsigned run) {
                           std::uint16_t& length = longest[start + place];
                           length = std::max(length, static_cast<std::uint16_t>(run));
                       });
        }
    }

private:
    /// From the end of the block: how many bytes repeat those at the distance.
    template <typename Visit>
    static void forEachRun(ByteSpan block, std::uint16_t distance, Visit visit) {
        unsigned run = 0;
        std::size_t place = block.size();
        while (place > distance) {
            --place;
            run = block[place] == block[place - distance] ? run + 1 : 0;
            visit(place, run);
        }
        while (place > 0) visit(--place, 0);
    }

    ByteSpan sample;
    std::vector<std::uint16_t> longest;  ///< match at each place, by the distances so far
    std::array<float, LiteralCount> literalBits{};
    std::array<float, BlockSize + 1> matchBits{};
};

}  // namespace

Distances chooseDistances(ByteSpan sample, unsigned threads) {
    struct Candidate {
        double bits = 0;  ///< of the sample with it
        std::uint16_t distance = 0;
        std::size_t round = 0;  ///< in which `bits` was found
    };
    std::vector<std::uint16_t> distances = candidates(sample, threads);
    RoughParser parser(sample);
    parser.add(distances[0]);
    double bits = parser.bitsWith(distances[0]);

    // Gains shrink as distances join, so that the stale gain of a candidate bounds its true one.
    std::vector<double> gains(distances.size());
    inParallel(
        threads, distances.size(),
        [&](std::uint64_t begin, std::uint64_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                gains[i] = bits - parser.bitsWith(distances[i]);
            }
        },
        1);

    Distances chosen{};
    chosen.fill(distances[0]);
    for (std::size_t slot = 1; slot < SlotCount; ++slot) {
        std::size_t best = 0;
        for (std::vector<bool> fresh(distances.size(), false); !fresh[best];) {
            fresh[best] = true;
            gains[best] = bits - parser.bitsWith(distances[best]);
            best = static_cast<std::size_t>(std::max_element(gains.begin(), gains.end()) -
                                            gains.begin());
        }
        chosen[slot] = distances[best];
        parser.add(distances[best]);
        bits -= gains[best];
        gains[best] = 0;
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

}  // namespace brivok::tables
