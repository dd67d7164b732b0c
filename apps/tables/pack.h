#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "../common/app_error.h"
#include "datacomp_symbols.h"

namespace brivok::tables {

/// Called now and then with the progress on a file.
using PackProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

struct PackOptions {
    unsigned threads = 1;
    bool best = false;  ///< takes several times as long for files that are a little smaller
    PackProgress progress{};
};

struct PackResult {
    std::uint64_t plainSize = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t storedBlocks = 0;  ///< blocks that did not shrink
};

/// Packs any file into a DATACOMP file. The result does not depend on the number of threads, and
/// memory use does not grow with the file. Empty files and files of about 4 GB or more cannot be
/// packed. Throws AppError. Packing and unpacking write to a temporary name and rename the file at
/// the end; a failure leaves nothing behind.
PackResult packFile(const std::filesystem::path& plain, const std::filesystem::path& packed,
                    const PackOptions& options = {});

/// Receives the blocks of a packed file in order, each with its number and the total.
using UnpackedBlockVisitor =
    std::function<void(ByteSpan block, std::uint64_t number, std::uint64_t count)>;

/// Unpacks a DATACOMP file block by block. Throws AppError if it is damaged, perhaps only after the
/// last block. Returns whether the checksums of the blocks agree; if not, they are unknown: see
/// BlockSums.
bool forEachUnpackedBlock(const std::filesystem::path& packed, const UnpackedBlockVisitor& visit);

struct UnpackOptions {
    std::string sha256{};  ///< of the plain file; empty if that is not known
    PackProgress progress{};
};

/// Unpacks a DATACOMP file. Returns the size of the plain file. Throws AppError, also if the plain
/// file has another sum than expected.
std::uint64_t unpackFile(const std::filesystem::path& packed, const std::filesystem::path& plain,
                         const UnpackOptions& options = {});

}  // namespace brivok::tables
