#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "egtb/datacomp.h"

namespace brivok {

using Bytes = std::vector<std::uint8_t>;

/// A file that reads from memory.
class MemoryFile {
public:
    explicit MemoryFile(Bytes content)
        : bytes(std::move(content)), file(fmemopen(bytes.data(), bytes.size(), "rb")) {}
    [[nodiscard]] std::FILE* get() const { return file.get(); }

private:
    struct Close {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };
    Bytes bytes;
    std::unique_ptr<std::FILE, Close> file;
};

/// Decodes one block into memory that ends at the last byte the decoder may write.
[[nodiscard]] inline DatacompFailure decodeBlock(const DatacompFile& decoder, std::FILE* file,
                                                 std::uint32_t block, Bytes& output) {
    const auto scratch = std::make_unique<DecodeScratch>();
    output.resize(decoder.blockSize + DecodeSlack);
    resetScratch(*scratch, output.data());
    const DatacompFailure failure = ReadDatacompBlock(decoder, *scratch, file, block);
    return failure == DatacompFailure::None ? DecodeDatacompBlock(decoder, *scratch) : failure;
}

/// Overwrites what a reader checks first, so that any input gets as far as the bit streams.
inline void repairHeader(Bytes& bytes) {
    const auto put32 = [&bytes](std::size_t at, std::size_t number) {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[at + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
        }
    };
    if (bytes.size() < datacomp::SmallestHeader) bytes.resize(datacomp::SmallestHeader);
    std::copy(datacomp::Signature.begin(), datacomp::Signature.end(), bytes.begin());
    std::size_t size = datacomp::bigEndian32(&bytes[datacomp::HeaderSizeOffset]);
    if (size < datacomp::SmallestHeader || size > bytes.size()) size = bytes.size();
    put32(datacomp::HeaderSizeOffset, size);
    if (bytes[datacomp::BlockLogOffset] > datacomp::LargestBlockLog) {
        bytes[datacomp::BlockLogOffset] = 7;
    }
    bytes[datacomp::DistanceCountOffset] = datacomp::DistanceCount;
    put32(datacomp::VariantOffset, datacomp::Variant);
    const std::size_t summed = size - datacomp::ChecksumSize;
    put32(summed, datacomp::checksum(std::span(bytes).first(summed)));
}

/// Opens the bytes as a file and decodes its first blocks, valid or not; returns how many were
/// valid.
inline int decodeAnything(const Bytes& bytes) {
    constexpr std::uint32_t Tries = 16;
    const MemoryFile file(bytes);
    std::unique_ptr<DatacompFile> decoder;
    if (OpenDatacompFile(file.get(), decoder) != DatacompFailure::None) return 0;
    int good = 0;
    Bytes output;
    for (std::uint32_t block = 0; block < Tries; ++block) {
        good += decodeBlock(*decoder, file.get(), block, output) == DatacompFailure::None ? 1 : 0;
    }
    return good;
}

}  // namespace brivok
