#include "datacomp_encoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <mutex>

#include "bit_writer.h"
#include "egtb/datacomp_format.h"
#include "parallel.h"

namespace brivok::tables {
namespace {

/// The format allows 31. With 15, a decoder that refills 16 bits at a time always has a whole code,
/// at a loss of some thousandths of a percent.
constexpr unsigned LongestCode = 15;

/// The first round of learning looks at one block in so many, each further one at twice as many
/// blocks, until it is all of them.
constexpr std::uint64_t FirstStride = 128;

void putBigEndian(Bytes& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

/// Cost of a stored block.
std::int32_t plainCost(ByteSpan block) {
    return static_cast<std::int32_t>(block.size() * 8 * CostUnit);
}

/// A block of random bytes fits a code that was made for it a little better than eight bits each.
/// Blocks that shrink by less than a sixteenth must not shape the code.
bool hardlyShrinks(ByteSpan block, std::int32_t cost) { return cost > plainCost(block) / 16 * 15; }

/// Initial costs: roughly those of a table's symbols.
SymbolCosts firstCosts() {
    SymbolCosts costs{};
    std::fill_n(costs.begin(), LiteralCount, std::uint16_t{6 * CostUnit});
    std::fill(costs.begin() + LiteralCount, costs.end(), std::uint16_t{8 * CostUnit});
    return costs;
}

// Code lengths of the symbols are written as runs, with one code for the value and one for the size
// of a run. The lengths of these two codes come first, as numbers of fixed width.
namespace run_lengths {

constexpr std::size_t CodeSize = 64;
constexpr unsigned LongestCode = 8;  // decodable in one lookup
constexpr std::uint32_t RunFlag = 32;
constexpr std::uint32_t ShortestRun = 2;
constexpr unsigned WidthBits = 5;
constexpr unsigned ZerosBits = 4;

/// A code length, for one symbol or for a run of symbols.
struct Run {
    std::uint32_t length = 0;
    std::uint32_t size = 0;
};

std::vector<Run> runsOf(const std::vector<std::uint8_t>& lengths) {
    std::vector<Run> runs;
    for (const std::uint8_t length : lengths) {
        if (runs.empty() || runs.back().length != length) runs.push_back({length, 0});
        ++runs.back().size;
    }
    return runs;
}

/// The symbol for the size of a run, and its extra bits.
Token sizeToken(std::uint32_t size) {
    constexpr std::uint32_t Exact = 32;
    const std::uint32_t value = size - ShortestRun;
    if (value < Exact) return {.symbol = static_cast<std::uint16_t>(value)};
    const std::uint32_t rest = value - (Exact - 1);
    const auto width = static_cast<std::uint32_t>(std::bit_width(rest) - 1);
    return {.symbol = static_cast<std::uint16_t>(Exact + width),
            .extra = static_cast<std::uint16_t>(rest - (1U << width)),
            .extraBits = static_cast<std::uint8_t>(width)};
}

void putPlainLengths(BitWriter& writer, const std::vector<std::uint8_t>& lengths) {
    const auto width = static_cast<unsigned>(
        std::bit_width(unsigned{*std::max_element(lengths.begin(), lengths.end())}));
    writer.put(0, 1);
    writer.put(width, WidthBits);
    for (auto length = lengths.begin(); length != lengths.end();) {
        writer.put(*length, width);
        if (*length++ != 0) continue;
        constexpr std::ptrdiff_t MostZeros = (1 << ZerosBits) - 1;
        const auto last = length + std::min(MostZeros, lengths.end() - length);
        const auto zeros =
            std::find_if(length, last, [](std::uint8_t l) { return l != 0; }) - length;
        writer.put(static_cast<std::uint32_t>(zeros), ZerosBits);
        length += zeros;
    }
}

void put(BitWriter& writer, const std::vector<std::uint8_t>& lengths) {
    const std::vector<Run> runs = runsOf(lengths);
    if (runs.size() == 1 && runs[0].length == 0) {
        writer.put(1, 1);
        return;
    }

    std::array<std::uint64_t, CodeSize> lengthCounts{};
    std::array<std::uint64_t, CodeSize> sizeCounts{};
    for (const Run& run : runs) {
        const bool single = run.size < ShortestRun;
        ++lengthCounts[run.length + (single ? 0 : RunFlag)];
        if (!single) ++sizeCounts[sizeToken(run.size).symbol];
    }
    const PrefixCode lengthCode(codeLengths(lengthCounts, LongestCode));
    const PrefixCode sizeCode(codeLengths(sizeCounts, LongestCode));

    std::vector<std::uint8_t> both = lengthCode.lengths();
    both.insert(both.end(), sizeCode.lengths().begin(), sizeCode.lengths().end());
    writer.put(0, 1);
    putPlainLengths(writer, both);
    for (const Run& run : runs) {
        const bool single = run.size < ShortestRun;
        lengthCode.put(writer, run.length + (single ? 0 : RunFlag));
        if (single) continue;
        const Token size = sizeToken(run.size);
        sizeCode.put(writer, size.symbol);
        writer.put(size.extra, size.extraBits);
    }
}

}  // namespace run_lengths

/// How often each symbol occurs in the cheapest parse of every `stride`-th block. Blocks that
/// hardly shrink are ignored.
SymbolCounts countSymbols(ByteSpan blocks, std::uint64_t stride, const ParseModel& model,
                          unsigned threads) {
    SymbolCounts counts{};
    std::mutex merging;
    const auto countSome = [&](std::uint64_t begin, std::uint64_t end) {
        SymbolCounts own{};
        BlockParser parser(model);
        for (std::uint64_t i = begin; i < end; ++i) {
            const ByteSpan block = blockOf(blocks, i * stride);
            if (hardlyShrinks(block, parser.parse(block))) continue;
            parser.forEachToken([&](const Token& token) { ++own[token.symbol]; });
        }
        const std::lock_guard lock(merging);
        for (std::size_t symbol = 0; symbol < SymbolCount; ++symbol) counts[symbol] += own[symbol];
    };
    inParallel(threads, (blocksIn(blocks.size()) + stride - 1) / stride, countSome, BlocksAtOnce);
    return counts;
}

}  // namespace

SymbolCounts learnCounts(ByteSpan sample, const Distances& distances, ExtensionRule extension,
                         unsigned rounds, unsigned threads) {
    SymbolCosts costs = firstCosts();
    SymbolCounts counts{};
    const auto learnFrom = [&](std::uint64_t stride) {
        counts = countSymbols(sample, stride, ParseModel(distances, costs, extension), threads);
        if (counts != SymbolCounts{}) costs = costsOf(counts);
    };
    for (std::uint64_t stride = FirstStride; stride > 1; stride /= 2) learnFrom(stride);
    for (unsigned round = 0; round < rounds; ++round) learnFrom(1);
    return counts;
}

PrefixCode makeCode(const SymbolCounts& counts) {
    return PrefixCode(codeLengths(counts, LongestCode));
}

BlockRecord BlockEncoder::encode(ByteSpan block, Bytes& packed) {
    packed.clear();
    if (parser.parse(block) < plainCost(block)) {
        BitWriter writer(packed);
        parser.forEachToken([&](const Token& token) {
            coding.code.put(writer, token.symbol);
            writer.put(token.extra, token.extraBits);
        });
        writer.finish();
        // Size 0 means a full block, so even a block with a single symbol takes a byte.
        if (packed.empty()) packed.push_back(0);
    }
    if (packed.empty() || packed.size() >= block.size()) packed.assign(block.begin(), block.end());
    return {.packedSize = static_cast<std::uint32_t>(packed.size()),
            .plainSum = datacomp::checksum(block),
            .packedSum = datacomp::checksum(packed)};
}

Bytes makeHeader(std::span<const BlockRecord> blocks, std::uint32_t lastBlockSize,
                 const Coding& coding) {
    Bytes tables;
    BitWriter blockTable(tables);
    // In BlockLog bits, the size of a full block is 0.
    for (const BlockRecord& block : blocks) blockTable.put(block.packedSize % BlockSize, BlockLog);
    blockTable.put(lastBlockSize % BlockSize, BlockLog);
    for (const std::uint16_t distance : coding.distances) blockTable.put(distance, BlockLog);
    blockTable.finish();
    BitWriter code(tables);
    run_lengths::put(code, coding.code.lengths());
    code.finish();

    const std::size_t size = datacomp::BlockSumsOffset + datacomp::BlockSumsSize * blocks.size() +
                             tables.size() + datacomp::ChecksumSize;
    Bytes header(datacomp::Signature.begin(), datacomp::Signature.end());
    putBigEndian(header, static_cast<std::uint32_t>(size));
    putBigEndian(header, BlockLog << 8 | std::uint32_t{SlotCount});
    putBigEndian(header, static_cast<std::uint32_t>(blocks.size()));
    putBigEndian(header, datacomp::Variant);
    for (const BlockRecord& block : blocks) {
        putBigEndian(header, block.plainSum);
        putBigEndian(header, block.packedSum);
    }
    header.insert(header.end(), tables.begin(), tables.end());
    putBigEndian(header, datacomp::checksum(header));
    return header;
}

}  // namespace brivok::tables
