#include "pack.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "../common/files.h"
#include "datacomp_encoder.h"
#include "distance_choice.h"
#include "egtb/datacomp.h"
#include "parallel.h"

namespace brivok::tables {
namespace {

using std::filesystem::path;

/// Number of blocks sampled for the distances, and for the initial symbol costs.
constexpr std::uint64_t DistanceSample = 48;
constexpr std::uint64_t CostSample = 128;

/// Number of distances that are examined closely.
constexpr std::size_t CandidateCount = 256;

/// Nothing else is considered inside a match of this length.
constexpr ExtensionRule Extension{.length = 32, .tolerance = 0};

/// Blocks in memory at a time.
constexpr std::uint64_t BatchSize = 1024;

/// A file to be packed, read in blocks.
class PlainFile {
public:
    explicit PlainFile(const path& itsName) : name(itsName), stream(name, std::ios::binary) {
        std::error_code failure;
        bytes = std::filesystem::file_size(name, failure);
        if (failure || !stream) fail(name, "cannot be opened");
        if (bytes == 0) fail(name, "is empty");
        // Offsets in the packed file have 32 bits, and each block costs about ten bytes of header.
        constexpr std::uint64_t HeaderRoom = std::uint64_t{1} << 23;
        if (bytes > std::numeric_limits<std::uint32_t>::max() - HeaderRoom) {
            fail(name, "is too large to be packed; the limit is 4 GB");
        }
    }

    [[nodiscard]] std::uint64_t size() const { return bytes; }
    [[nodiscard]] std::uint64_t blockCount() const { return blocksIn(bytes); }

    /// Appends blocks to `to`.
    void read(std::uint64_t first, std::uint64_t count, Bytes& to) {
        const std::uint64_t start = first * BlockSize;
        const std::uint64_t length = std::min(count * BlockSize, bytes - start);
        const std::size_t held = to.size();
        to.resize(held + length);
        stream.seekg(static_cast<std::streamoff>(start));
        if (!stream.read(reinterpret_cast<char*>(to.data() + held),
                         static_cast<std::streamsize>(length))) {
            fail(name, "cannot be read");
        }
    }

    /// `count` blocks from all over the file, or all of them.
    [[nodiscard]] Bytes sample(std::uint64_t count) {
        count = std::min(count, blockCount());
        Bytes blocks;
        for (std::uint64_t i = 0; i < count; ++i) read(i * blockCount() / count, 1, blocks);
        return blocks;
    }

    /// Calls work(first block, blocks) for all blocks in order.
    template <typename Work>
    void forEachBatch(Work work) {
        Bytes blocks;
        for (std::uint64_t first = 0; first < blockCount(); first += BatchSize) {
            blocks.clear();
            read(first, BatchSize, blocks);
            work(first, ByteSpan(blocks));
        }
    }

private:
    path name;
    std::ifstream stream;
    std::uint64_t bytes = 0;
};

/// Reports the progress of work on a new file and lets the user interrupt it.
class ProgressReport {
public:
    ProgressReport(const NewFile& itsFile, const PackProgress& itsProgress, std::uint64_t itsTotal)
        : file(itsFile), progress(itsProgress), total(itsTotal) {}

    void add(std::uint64_t amount) {
        file.checkInterrupt();
        done += amount;
        if (progress) progress(done, total);
    }

private:
    const NewFile& file;
    const PackProgress& progress;
    std::uint64_t total;
    std::uint64_t done = 0;
};

Coding chooseCoding(PlainFile& file, unsigned threads, ProgressReport& report) {
    Coding coding;
    coding.distances = chooseDistances(file.sample(DistanceSample), CandidateCount, threads);
    const ParseModel model(
        coding.distances, learnCosts(file.sample(CostSample), coding.distances, Extension, threads),
        Extension);
    SymbolCounts counts{};
    file.forEachBatch([&](std::uint64_t, ByteSpan blocks) {
        const SymbolCounts found = countSymbols(blocks, model, threads);
        for (std::size_t symbol = 0; symbol < SymbolCount; ++symbol) {
            counts[symbol] += found[symbol];
        }
        report.add(blocks.size());
    });
    coding.code = makeCode(counts);
    return coding;
}

std::string reasonOf(DatacompFailure failure) {
    switch (failure) {
        case DatacompFailure::Read: return "is not a packed table, or is truncated";
        case DatacompFailure::OutOfMemory: return "is truncated, or needs too much memory";
        default: return "is damaged";
    }
}

}  // namespace

PackResult packFile(const path& plain, const path& packed, const PackOptions& options) {
    PlainFile input(plain);
    NewFile output(packed);
    constexpr std::uint64_t Passes = 2;
    ProgressReport report(output, options.progress, Passes * input.size());
    const Coding coding = chooseCoding(input, options.threads, report);
    const ParseModel model(coding.distances, costsOf(coding.code), Extension);

    std::vector<BlockRecord> records(input.blockCount());
    const auto lastSize = static_cast<std::uint32_t>((input.size() - 1) % BlockSize + 1);
    const Bytes placeholder = makeHeader(records, lastSize, coding);
    output.write(placeholder);
    PackResult result{.plainSize = input.size(), .packedSize = placeholder.size()};
    std::vector<Bytes> encoded(BatchSize);
    input.forEachBatch([&](std::uint64_t first, ByteSpan blocks) {
        const std::uint64_t count = blocksIn(blocks.size());
        const auto encodeSome = [&](std::uint64_t begin, std::uint64_t end) {
            BlockEncoder encoder(coding, model);
            for (std::uint64_t i = begin; i < end; ++i) {
                records[first + i] = encoder.encode(blockOf(blocks, i), encoded[i]);
            }
        };
        inParallel(options.threads, count, encodeSome, BlocksAtOnce);
        for (std::uint64_t i = 0; i < count; ++i) {
            output.write(encoded[i]);
            result.packedSize += encoded[i].size();
            if (encoded[i].size() == blockOf(blocks, i).size()) ++result.storedBlocks;
        }
        report.add(blocks.size());
    });
    output.rewind();
    output.write(makeHeader(records, lastSize, coding));
    output.finish();
    return result;
}

void forEachUnpackedBlock(const path& packed, const UnpackedBlockVisitor& visit) {
    const FileHandle input = openForReading(packed);
    const auto check = [&](DatacompFailure failure) {
        if (failure != DatacompFailure::None) fail(packed, reasonOf(failure));
    };

    std::unique_ptr<DatacompFile> decoder;
    check(OpenDatacompFile(input.get(), decoder));
    if (decoder->blockSize != BlockSize) {
        fail(packed, "has an unexpected block size");
    }
    const std::uint32_t count = decoder->blockCount;
    const auto scratch = std::make_unique<DecodeScratch>();
    Bytes block(BlockSize + DecodeSlack);
    for (std::uint32_t number = 0; number < count; ++number) {
        resetScratch(*scratch, block.data());
        check(ReadDatacompBlock(*decoder, *scratch, input.get(), number));
        check(DecodeDatacompBlock(*decoder, *scratch));
        const std::size_t length = number + 1 == count ? decoder->lastBlockSize : BlockSize;
        visit(ByteSpan(block).first(length), number, count);
    }
}

std::uint64_t unpackFile(const path& packed, const path& plain, const PackProgress& progress) {
    NewFile output(plain);
    std::uint64_t size = 0;
    forEachUnpackedBlock(packed, [&](ByteSpan block, std::uint64_t number, std::uint64_t count) {
        output.write(block);
        size += block.size();
        if (progress) progress(number + 1, count);
    });
    output.finish();
    return size;
}

}  // namespace brivok::tables
