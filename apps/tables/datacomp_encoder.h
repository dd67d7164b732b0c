#pragma once

#include <cstdint>
#include <span>

#include "block_parser.h"
#include "datacomp_symbols.h"
#include "prefix_code.h"

/// Packs tables in the DATACOMP format, which egtb/datacomp.h reads: independently decodable
/// blocks, all with the code and the distances in the header.
namespace brivok::tables {

/// What the blocks of a file are encoded with.
struct Coding {
    Distances distances{};
    PrefixCode code;
};

/// Blocks per thread at a time.
inline constexpr std::uint64_t BlocksAtOnce = 8;

/// A block's entry in the header. The checksums have the same form as the header's; BlockSums
/// checks them.
struct BlockRecord {
    std::uint32_t packedSize = 0;  ///< size of the block itself if it is stored
    std::uint32_t plainSum = 0;    ///< of the decoded block
    std::uint32_t packedSum = 0;   ///< of the block in the file
};

/// How often each symbol occurs in a parse of the sample whose costs roughly agree with these
/// counts, after short rounds and `rounds`, at least one, that look at all of it. Blocks that
/// hardly shrink are ignored.
[[nodiscard]] SymbolCounts learnCounts(ByteSpan sample, const Distances& distances,
                                       ExtensionRule extension, unsigned rounds, unsigned threads);

/// A code for symbols with these counts, short enough for any decoder.
[[nodiscard]] PrefixCode makeCode(const SymbolCounts& counts);

/// Encodes single blocks.
class BlockEncoder {
public:
    /// `model` must have the costs of the code.
    BlockEncoder(const Coding& itsCoding, const ParseModel& model)
        : coding(itsCoding), parser(model) {}

    /// Sets `packed` to the bytes of the block in the file: fewer bytes, or the block itself.
    BlockRecord encode(ByteSpan block, Bytes& packed);

private:
    const Coding& coding;
    BlockParser parser;
};

/// The header for these blocks. Its size depends only on the coding and the number of blocks.
[[nodiscard]] Bytes makeHeader(std::span<const BlockRecord> blocks, std::uint32_t lastBlockSize,
                               const Coding& coding);

}  // namespace brivok::tables
