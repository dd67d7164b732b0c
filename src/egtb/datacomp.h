#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "egtb/datacomp_format.h"
#include "egtb/huffman.h"

namespace brivok {

/// Why a compressed table cannot be read.
enum class DatacompFailure : int {
    None = 0,
    Read = 2,
    OutOfMemory = 5,
    Broken = 6,
    BadArgument = 7
};

/// The largest block that the block operations take: a table's.
inline constexpr int LargestDecodedBlock = 8192;

/// How many bytes behind a block its decoding may overwrite.
inline constexpr int DecodeSlack = 36;

/// What the header of a compressed file says: all that it takes to decode any of its blocks.
struct DatacompFile {
    std::int32_t blockLog = 0;       ///< log2 of `blockSize`
    std::int32_t blockSize = 0;      ///< 2^blockLog bytes, decoded
    std::int32_t lastBlockSize = 0;  ///< of the last block, decoded
    std::int32_t blockCount = 0;     ///< blocks in the file

    /// Where in the file each block begins, then where the last one ends.
    std::vector<std::uint32_t> blockOffsets;
    /// How far back the matches reach, one for each 32 of their symbols.
    std::array<std::uint32_t, datacomp::DistanceCount> distances{};
    HuffmanTable<13, datacomp::SymbolCount> decodeTable;  ///< of the symbols of the blocks
};

/// A block on its way from the file to the caller's memory.
struct DecodeScratch {
    std::uint8_t* output = nullptr;    ///< where the decoded block goes; the caller's
    std::uint32_t decodedSize = 0;     ///< bytes to decode; 0 if the block needs no decoding
    std::uint32_t compressedSize = 0;  ///< bytes of `input` that are filled
    std::array<std::uint8_t, LargestDecodedBlock> input;  ///< the block as it is in the file
};

/// Reads a header at the start of `file`. `decoder` is set on success only.
/// Read: not the start of such a file. OutOfMemory: the memory is refused, or the file ends within
/// the header. Broken: anything wrong in the header.
[[nodiscard]] DatacompFailure OpenDatacompFile(std::FILE* file,
                                               std::unique_ptr<DatacompFile>& decoder);

/// Readies the scratch for a block. `output` has room for one block and DecodeSlack bytes.
void resetScratch(DecodeScratch& scratch, std::uint8_t* output);

/// Reads block number `block` from the file. One that is stored as it is goes to the output.
/// BadArgument: no such block, blocks too large, or no output. Read: the file does not give it.
[[nodiscard]] DatacompFailure ReadDatacompBlock(const DatacompFile& decoder, DecodeScratch& scratch,
                                                std::FILE* file, std::uint32_t block);

/// Decodes the block that was read last into the output, if it needs that. Broken: the data are no
/// block, and the output holds anything.
[[nodiscard]] DatacompFailure DecodeDatacompBlock(const DatacompFile& decoder,
                                                  DecodeScratch& scratch);

}  // namespace brivok
