#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "datacomp_symbols.h"

namespace brivok::tables {

/// The checksums of a packed file's blocks, which its header lists.
///
/// Files of other origin may sum their blocks in another way. So a file is damaged if some sums
/// agree and others do not, or if its only block does not agree; if none of several blocks agrees,
/// the sums are unknown and tell nothing.
class BlockSums {
public:
    /// Reads the sums of an open file with a sound header. Throws AppError.
    BlockSums(const std::filesystem::path& itsPath, std::FILE* file, std::uint32_t blockCount);

    /// Compares the sums of the next block. Throws AppError if the file is damaged.
    void check(ByteSpan plain, ByteSpan packed);

    /// After the last block: whether the sums agree. If not, they are unknown.
    [[nodiscard]] bool agree() const { return wrong == 0; }

private:
    std::filesystem::path path;
    Bytes sums;
    std::uint32_t count;
    std::uint32_t next = 0;
    std::uint64_t right = 0;
    std::uint64_t wrong = 0;
};

}  // namespace brivok::tables
