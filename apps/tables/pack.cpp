#include "pack.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "../common/files.h"
#include "../common/sha256.h"
#include "block_sums.h"
#include "datacomp_encoder.h"
#include "distance_choice.h"
#include "egtb/datacomp.h"
#include "parallel.h"

namespace brivok::tables {
namespace {

using std::filesystem::path;

/// How many blocks to sample: one in `share`, but at least and at most so many.
struct Sampling {
    std::uint64_t share = 1;
    std::uint64_t least = 0;
    std::uint64_t most = 0;
};

/// How much the packer looks at before it packs, and how closely.
struct Effort {
    std::size_t candidates = 0;  ///< for the distances
    Sampling distances;
    Sampling code;
    unsigned rounds = 1;  ///< of learning from the whole sample for the code
    ExtensionRule extension;
};
constexpr Effort Usual{.candidates = 96,
                       .distances = {.share = 16, .least = 16, .most = 48},
                       .code = {.share = 8, .least = 48, .most = 1024},
                       .rounds = 1,
                       .extension = {.length = 5, .tolerance = CostUnit}};
constexpr Effort Best{.candidates = 384,
                      .distances = {.share = 1, .least = 1, .most = 64},
                      .code = {.share = 1, .least = 1, .most = 8192},
                      .rounds = 4,
                      .extension = {.length = 32, .tolerance = 0}};

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

    /// Blocks from all over the file.
    [[nodiscard]] Bytes sample(const Sampling& sampling) {
        const std::uint64_t wanted =
            std::clamp(blockCount() / sampling.share, sampling.least, sampling.most);
        const std::uint64_t count = std::min(wanted, blockCount());
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

/// Which bytes occur in the file at all.
std::array<bool, LiteralCount> bytesIn(PlainFile& file, ProgressReport& report) {
    std::array<bool, LiteralCount> found{};
    file.forEachBatch([&](std::uint64_t, ByteSpan blocks) {
        for (const std::uint8_t byte : blocks) found[byte] = true;
        report.add(blocks.size());
    });
    return found;
}

Coding chooseCoding(PlainFile& file, const Effort& effort, unsigned threads,
                    ProgressReport& report) {
    Coding coding;
    coding.distances = chooseDistances(file.sample(effort.distances), effort.candidates, threads);
    SymbolCounts counts = learnCounts(file.sample(effort.code), coding.distances, effort.extension,
                                      effort.rounds, threads);
    // With a code for each byte, every block can be encoded, whatever the sample lacks. If nothing
    // in the sample shrinks, all blocks are stored.
    const auto occurs = bytesIn(file, report);
    if (counts != SymbolCounts{}) {
        for (std::size_t byte = 0; byte < LiteralCount; ++byte) {
            if (occurs[byte] && counts[byte] == 0) counts[byte] = 1;
        }
    }
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
    const Effort& effort = options.best ? Best : Usual;
    const Coding coding = chooseCoding(input, effort, options.threads, report);
    const ParseModel model(coding.distances, costsOf(coding.code), effort.extension);

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

bool forEachUnpackedBlock(const path& packed, const UnpackedBlockVisitor& visit) {
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
    BlockSums sums(packed, input.get(), count);
    const auto scratch = std::make_unique<DecodeScratch>();
    Bytes block(BlockSize + DecodeSlack);
    for (std::uint32_t number = 0; number < count; ++number) {
        resetScratch(*scratch, block.data());
        check(ReadDatacompBlock(*decoder, *scratch, input.get(), number));
        check(DecodeDatacompBlock(*decoder, *scratch));
        const std::size_t length = number + 1 == count ? decoder->lastBlockSize : BlockSize;
        const ByteSpan plain = ByteSpan(block).first(length);
        const bool stored = scratch->decodedSize == 0;
        sums.check(plain, stored ? plain : ByteSpan(scratch->input).first(scratch->compressedSize));
        visit(plain, number, count);
    }
    return sums.agree();
}

std::uint64_t unpackFile(const path& packed, const path& plain, const UnpackOptions& options) {
    NewFile output(plain);
    Sha256 sum;
    std::uint64_t size = 0;
    forEachUnpackedBlock(packed, [&](ByteSpan block, std::uint64_t number, std::uint64_t count) {
        output.write(block);
        sum.add(block);
        size += block.size();
        if (options.progress) options.progress(number + 1, count);
    });
    if (!options.sha256.empty() && sum.finish() != options.sha256) {
        fail(packed, "is damaged: it does not have the recorded SHA-256 sum");
    }
    output.finish();
    return size;
}

}  // namespace brivok::tables
