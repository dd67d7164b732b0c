#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "egtb/datacomp_format.h"
#include "egtb/huffman.h"

namespace brivok {

enum class DatacompFailure : int {
    None = 0,
    Read = 2,
    OutOfMemory = 5,
    Broken = 6,
    BadArgument = 7
};

/// The largest block that the block operations accept: that of a table.
inline constexpr int LargestDecodedBlock = 8192;

/// How many bytes after a block its decoding may overwrite.
inline constexpr int DecodeSlack = 36;

/// Contents of a compressed file's header: all that decoding a block requires.
struct DatacompFile {
    std::uint32_t blockLog = 0;
    std::uint32_t blockSize = 0;      ///< 2^blockLog, in bytes, decoded
    std::uint32_t lastBlockSize = 0;  ///< in bytes, decoded
    std::uint32_t blockCount = 0;

    /// File offset of each block, then the end of the last.
    std::vector<std::uint32_t> blockOffsets;
    /// How far back the matches of each slot reach.
    std::array<std::uint32_t, datacomp::DistanceCount> distances{};
    HuffmanTable<13, datacomp::SymbolCount> decodeTable;  ///< for the symbols of the blocks
};

/// A block between the file and the caller's memory.
struct DecodeScratch {
    std::uint8_t* output = nullptr;    ///< where the decoded block goes; owned by the caller
    std::uint32_t decodedSize = 0;     ///< bytes to decode; 0 if the block is stored
    std::uint32_t compressedSize = 0;  ///< bytes in `input`
    std::array<std::uint8_t, LargestDecodedBlock> input;  ///< the compressed block
};

/// Reads the header at the start of `file`. Sets `decoder` only on success. Read: not such a file.
/// OutOfMemory: memory was refused, or the file ends within the header. Broken: an error in the
/// header.
[[nodiscard]] DatacompFailure OpenDatacompFile(std::FILE* file,
                                               std::unique_ptr<DatacompFile>& decoder);

/// Prepares the scratch for a block. `output` has room for one block plus DecodeSlack bytes.
void resetScratch(DecodeScratch& scratch, std::uint8_t* output);

/// Reads block number `block`. A stored block goes straight to the output. BadArgument: no such
/// block, blocks too large, or no output. Read: the file could not be read.
[[nodiscard]] DatacompFailure ReadDatacompBlock(const DatacompFile& decoder, DecodeScratch& scratch,
                                                std::FILE* file, std::uint32_t block);

/// Decodes the last block read into the output, unless it was stored. Broken: the data are not a
/// valid block, and the output is undefined.
[[nodiscard]] DatacompFailure DecodeDatacompBlock(const DatacompFile& decoder,
                                                  DecodeScratch& scratch);

}  // namespace brivok
