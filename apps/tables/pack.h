#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "../common/app_error.h"
#include "datacomp_symbols.h"

namespace brivok::tables {

/// Told now and then how far the work on a file is.
using PackProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

struct PackOptions {
    unsigned threads = 1;
    PackProgress progress{};
};

struct PackResult {
    std::uint64_t plainSize = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t storedBlocks = 0;  ///< those that did not shrink
};

/// Packs any file into a DATACOMP file. The result does not depend on the number of threads, and
/// the memory does not grow with the file. Throws AppError; an empty file and one of about 4 GB
/// and more cannot be packed. Both operations write under a temporary name and rename in the end;
/// after a failure nothing of theirs is left.
PackResult packFile(const std::filesystem::path& plain, const std::filesystem::path& packed,
                    const PackOptions& options = {});

/// Told the blocks of a packed file in order, with their number and how many there are.
using UnpackedBlockVisitor =
    std::function<void(ByteSpan block, std::uint64_t number, std::uint64_t count)>;

/// Unpacks a DATACOMP file block by block. Throws AppError.
void forEachUnpackedBlock(const std::filesystem::path& packed, const UnpackedBlockVisitor& visit);

/// Unpacks a DATACOMP file. Returns the size of the plain file. Throws AppError.
std::uint64_t unpackFile(const std::filesystem::path& packed, const std::filesystem::path& plain,
                         const PackProgress& progress = {});

}  // namespace brivok::tables
