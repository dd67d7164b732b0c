#include "block_sums.h"

#include <cstddef>

#include "../common/app_error.h"

namespace brivok::tables {

BlockSums::BlockSums(const std::filesystem::path& itsPath, std::FILE* file,
                     std::uint32_t blockCount)
    : path(itsPath), sums(std::size_t{blockCount} * datacomp::BlockSumsSize), count(blockCount) {
    if (std::fseek(file, datacomp::BlockSumsOffset, SEEK_SET) != 0 ||
        std::fread(sums.data(), 1, sums.size(), file) != sums.size()) {
        fail(path, "is truncated");
    }
}

void BlockSums::check(ByteSpan plain, ByteSpan packed) {
    const ByteSpan expected = ByteSpan(sums).subspan(std::size_t{next} * datacomp::BlockSumsSize,
                                                     datacomp::BlockSumsSize);
    ++next;
    for (const bool agrees :
         {datacomp::checksum(plain) == datacomp::bigEndian32(expected.data()),
          datacomp::checksum(packed) == datacomp::bigEndian32(expected.data() + 4)}) {
        ++(agrees ? right : wrong);
    }
    if (wrong != 0 && (right != 0 || count == 1)) {
        fail(path, "is damaged: the checksums of its blocks do not agree");
    }
}

}  // namespace brivok::tables
