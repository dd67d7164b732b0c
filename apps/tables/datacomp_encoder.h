#pragma once

#include <cstdint>
#include <span>

#include "block_parser.h"
#include "datacomp_symbols.h"
#include "prefix_code.h"

/// Packs tables in the DATACOMP format, which egtb/datacomp.h reads: blocks that decode one by one,
/// all with the code and the distances that the header holds.
namespace brivok::tables {

/// What the blocks of a file are coded with.
struct Coding {
    Distances distances{};
    PrefixCode code;
};

/// Blocks that a thread takes at a time.
inline constexpr std::uint64_t BlocksAtOnce = 8;

/// What the header says of a block. Nobody reads the checksums; they are of the same form as that
/// of the header.
struct BlockRecord {
    std::uint32_t packedSize = 0;  ///< that of the block itself if it is stored
    std::uint32_t plainSum = 0;    ///< checksum of the decoded block
    std::uint32_t packedSum = 0;   ///< checksum of the block in the file
};

/// How often each symbol serves in the cheapest parse of the blocks. Blocks that do not shrink are
/// left out.
[[nodiscard]] SymbolCounts countSymbols(ByteSpan blocks, const ParseModel& model, unsigned threads);

/// The costs of symbols on which parse and code of the sample agree, more or less.
[[nodiscard]] SymbolCosts learnCosts(ByteSpan sample, const Distances& distances, unsigned threads);

/// The code for symbols that occur so often; short enough for every decoder.
[[nodiscard]] PrefixCode makeCode(const SymbolCounts& counts);

/// Encodes single blocks.
class BlockEncoder {
public:
    /// The model is that of the code's costs.
    BlockEncoder(const Coding& itsCoding, const ParseModel& model)
        : coding(itsCoding), parser(model) {}

    /// Sets `packed` to what stands in the file for the block: fewer bytes, or the block itself.
    BlockRecord encode(ByteSpan block, Bytes& packed);

private:
    const Coding& coding;
    BlockParser parser;
};

/// The header of a file with these blocks. Its size depends on the coding and the number of blocks.
[[nodiscard]] Bytes makeHeader(std::span<const BlockRecord> blocks, std::uint32_t lastBlockSize,
                               const Coding& coding);

}  // namespace brivok::tables
