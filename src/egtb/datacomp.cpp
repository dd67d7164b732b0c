#include "egtb/datacomp.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <utility>

#include "egtb/seek.h"

namespace brivok {

namespace {

using datacomp::bigEndian32;
using HeaderBytes = std::vector<std::uint8_t>;

/// A code of up to this many symbols stores its lengths plainly, without a code for them.
constexpr std::size_t PlainLengthCodes = 128;

/// Appends to `header` until it has `size` bytes; false if the file has fewer. Grows in pieces, so
/// that a false size costs no memory.
[[nodiscard]] bool readUpTo(std::FILE* file, std::size_t size, HeaderBytes& header) {
    constexpr std::size_t Piece = std::size_t{1} << 20U;
    while (header.size() < size) {
        const std::size_t begin = header.size();
        const std::size_t wanted = std::min(size - begin, Piece);
        header.resize(begin + wanted);
        if (std::fread(&header[begin], 1, wanted, file) != wanted) return false;
    }
    return true;
}

/// Reads the header and checks it as far as possible without its bit streams.
[[nodiscard]] DatacompFailure readHeader(std::FILE* file, HeaderBytes& header) {
    if (!readUpTo(file, datacomp::BlockSumsOffset, header)) return DatacompFailure::Read;
    if (!std::equal(datacomp::Signature.begin(), datacomp::Signature.end(), header.begin())) {
        return DatacompFailure::Read;
    }
    const std::uint32_t size = bigEndian32(&header[datacomp::HeaderSizeOffset]);
    if (header[datacomp::BlockLogOffset] > datacomp::LargestBlockLog ||
        size < datacomp::SmallestHeader ||
        header[datacomp::DistanceCountOffset] != datacomp::DistanceCount ||
        bigEndian32(&header[datacomp::VariantOffset]) != datacomp::Variant) {
        return DatacompFailure::Broken;
    }
    if (!readUpTo(file, size, header)) return DatacompFailure::OutOfMemory;

    const std::size_t summed = size - datacomp::ChecksumSize;
    const std::uint32_t sum = datacomp::checksum(std::span(header).first(summed));
    return sum == bigEndian32(&header[summed]) ? DatacompFailure::None : DatacompFailure::Broken;
}

/// Reads the lengths of a small code over zeros: numbers of fixed width, each 0 followed by how
/// many more zeros there are.
[[nodiscard]] bool readPlainLengths(BitReader& reader, std::span<std::uint8_t> lengths) {
    const std::uint32_t width = reader.read(5);
    for (std::size_t i = 0; i < lengths.size();) {
        const std::uint32_t length = reader.read(width);
        if (length > LongestCode) return false;
        lengths[i++] = static_cast<std::uint8_t>(length);
        if (length == 0) {
            const std::size_t more = reader.read(4);
            if (more > lengths.size() - i) return false;
            i += more;
        }
    }
    return true;
}

/// Reads the code lengths of `lengths.size()` symbols. The lengths of a large code are coded
/// themselves, as values and runs of a value, with one code of 64 symbols for each. Every step sets
/// at least one length, so this ends on any data; the caller checks for an overrun.
[[nodiscard]] bool ReadCodeLengths(BitReader& reader, std::span<std::uint8_t> lengths) {
    std::fill(lengths.begin(), lengths.end(), std::uint8_t{0});
    if (reader.read(1) == 1) return true;
    if (lengths.size() <= PlainLengthCodes) return readPlainLengths(reader, lengths);

    constexpr std::size_t CodeSize = PlainLengthCodes / 2;
    constexpr int RunFlag = 32;    // in a value: a run of it follows
    constexpr int PlainRuns = 32;  // run codes below this are run lengths, minus the shortest
    constexpr std::size_t ShortestRun = 2;
    std::array<std::uint8_t, PlainLengthCodes> small{};
    HuffmanTable<8, CodeSize> values;
    HuffmanTable<8, CodeSize> runs;
    if (!ReadCodeLengths(reader, small) || !values.build(std::span(small).first<CodeSize>()) ||
        !runs.build(std::span(small).last<CodeSize>())) {
        return false;
    }
    for (std::size_t i = 0; i < lengths.size();) {
        reader.refill();
        const unsigned value = values.decode(reader);
        std::uint64_t run = 1;
        if (value >= RunFlag) {
            reader.refill();
            const unsigned code = runs.decode(reader);
            run = code + ShortestRun;
            if (code >= PlainRuns) {
                const unsigned bits = code - PlainRuns;
                run = (std::uint64_t{1} << bits) + reader.read(bits) + PlainRuns - 1 + ShortestRun;
            }
        }
        if (run > lengths.size() - i) return false;
        std::fill_n(&lengths[i], run, static_cast<std::uint8_t>(value % RunFlag));
        i += run;
    }
    return true;
}

/// Takes the fields, the block table and the code from a header with a correct checksum. The bit
/// streams must end within the header.
[[nodiscard]] DatacompFailure interpretHeader(std::span<const std::uint8_t> header,
                                              DatacompFile& decoder) {
    const unsigned fieldBits = header[datacomp::BlockLogOffset];
    const std::uint32_t blockSize = std::uint32_t{1} << fieldBits;
    decoder.blockCount = bigEndian32(&header[datacomp::BlockCountOffset]);
    const std::uint64_t blocks = decoder.blockCount;
    const std::uint64_t fields = blocks + 1 + datacomp::DistanceCount;
    const std::uint64_t table = datacomp::BlockSumsOffset + blocks * datacomp::BlockSumsSize;
    const std::uint64_t codes = table + (fields * fieldBits + 7) / 8;
    const std::size_t end = header.size() - datacomp::ChecksumSize;
    if (codes >= end) return DatacompFailure::Broken;

    BitReader reader(header.subspan(table, codes - table));
    const auto readSize = [&reader, fieldBits, blockSize] {
        const std::uint32_t size = reader.read(fieldBits);
        return size == 0 ? blockSize : size;
    };
    std::uint64_t offset = header.size();
    decoder.blockOffsets.reserve(blocks + 1);
    decoder.blockOffsets.push_back(static_cast<std::uint32_t>(offset));
    for (std::uint64_t block = 0; block < blocks; ++block) {
        offset += readSize();
        if (offset > std::numeric_limits<std::uint32_t>::max()) return DatacompFailure::Broken;
        decoder.blockOffsets.push_back(static_cast<std::uint32_t>(offset));
    }
    decoder.blockLog = fieldBits;
    decoder.blockSize = blockSize;
    decoder.lastBlockSize = readSize();
    for (std::uint32_t& distance : decoder.distances) distance = reader.read(fieldBits);

    std::array<std::uint8_t, datacomp::SymbolCount> lengths{};
    BitReader lengthReader(header.subspan(codes, end - codes));
    const bool complete = ReadCodeLengths(lengthReader, lengths) && !lengthReader.overrun() &&
                          decoder.decodeTable.build(lengths);
    return complete ? DatacompFailure::None : DatacompFailure::Broken;
}

/// Copies `length` bytes, at least one, from `distance` bytes back; the ranges may overlap. Copies
/// in groups and so may write up to seven bytes too many.
void copyMatch(std::uint8_t* to, std::size_t distance, std::size_t length) {
    constexpr std::size_t Group = 8;
    static_assert(datacomp::LooseMatch + Group <= DecodeSlack);
    // For distances below Group: the smallest multiple that is at least Group.
    constexpr std::array<std::uint8_t, Group> repeated = {0, 8, 8, 9, 8, 10, 12, 14};
    std::uint8_t* const end = to + length;
    if (distance < Group) {
        for (std::size_t i = 0; i < Group; ++i, ++to) *to = *(to - distance);
        distance = repeated[distance];
    }
    for (; to < end; to += Group) std::memcpy(to, to - distance, Group);
}

}  // namespace

DatacompFailure OpenDatacompFile(std::FILE* file, std::unique_ptr<DatacompFile>& decoder) try {
    HeaderBytes header;
    if (const auto failure = readHeader(file, header); failure != DatacompFailure::None) {
        return failure;
    }
    auto opened = std::make_unique<DatacompFile>();
    const DatacompFailure failure = interpretHeader(header, *opened);
    if (failure == DatacompFailure::None) decoder = std::move(opened);
    return failure;
} catch (const std::bad_alloc&) {
    return DatacompFailure::OutOfMemory;
}

void resetScratch(DecodeScratch& scratch, std::uint8_t* output) {
    scratch.output = output;
    scratch.decodedSize = 0;
}

DatacompFailure ReadDatacompBlock(const DatacompFile& decoder, DecodeScratch& scratch,
                                  std::FILE* file, std::uint32_t block) {
    scratch.decodedSize = 0;
    if (block >= decoder.blockCount || decoder.blockSize > LargestDecodedBlock ||
        scratch.output == nullptr) {
        return DatacompFailure::BadArgument;
    }
    const std::uint32_t expected =
        block + 1 == decoder.blockCount ? decoder.lastBlockSize : decoder.blockSize;
    const std::uint32_t compressed = decoder.blockOffsets[block + 1] - decoder.blockOffsets[block];
    const bool stored = compressed == expected;
    std::uint8_t* const target = stored ? scratch.output : scratch.input.data();
    if (!seekTo(file, decoder.blockOffsets[block]) ||
        std::fread(target, 1, compressed, file) != compressed) {
        return DatacompFailure::Read;
    }
    scratch.compressedSize = compressed;
    scratch.decodedSize = stored ? 0 : expected;
    return DatacompFailure::None;
}

DatacompFailure DecodeDatacompBlock(const DatacompFile& decoder, DecodeScratch& scratch) {
    // One refill must cover a code and the length bits of a match.
    static_assert(LongestCode + datacomp::LengthCodes - datacomp::PlainLengths <=
                  BitReader::RefilledBits);
    BitReader reader(std::span(scratch.input).first(scratch.compressedSize));
    std::uint8_t* const begin = scratch.output;
    std::uint8_t* const end = begin + scratch.decodedSize;
    for (std::uint8_t* to = begin; to < end;) {
        reader.refill();
        const unsigned symbol = decoder.decodeTable.decode(reader);
        if (symbol < datacomp::FirstMatch) {
            *to++ = static_cast<std::uint8_t>(symbol);
            continue;
        }
        const unsigned match = symbol - datacomp::FirstMatch;
        const unsigned code = match % datacomp::LengthCodes;
        std::size_t length = code + 1;
        if (code >= datacomp::PlainLengths) {
            const unsigned bits = code - datacomp::PlainLengths + 1;
            length = (std::size_t{1} << bits) + reader.take(bits) + datacomp::PlainLengths - 1;
        }
        const std::size_t distance = decoder.distances[match / datacomp::LengthCodes];
        if (distance == 0 || distance > static_cast<std::size_t>(to - begin) ||
            (length > datacomp::LooseMatch && length > static_cast<std::size_t>(end - to))) {
            return DatacompFailure::Broken;
        }
        copyMatch(to, distance, length);
        to += length;
    }
    return reader.overrun() ? DatacompFailure::Broken : DatacompFailure::None;
}

}  // namespace brivok
