#include "file_pieces.h"

#include <cstddef>
#include <cstdio>
#include <string>

#include "../common/files.h"
#include "egtb/descriptors.h"
#include "pack.h"

namespace brivok::tables {

unsigned entryBytesOf(int id) { return (descriptorOf(id).flags & TwoByte) != 0 ? 2 : 1; }

bool forEachPiece(const std::filesystem::path& path, std::uint64_t most,
                  const std::function<void(ByteSpan)>& visit) {
    std::uint64_t size = 0;
    const auto visitChecked = [&](ByteSpan piece) {
        size += piece.size();
        if (size > most) fail(path, "more than " + std::to_string(most) + " bytes");
        visit(piece);
    };
    if (isPackedName(path)) {
        return forEachUnpackedBlock(
            path, [&](ByteSpan block, std::uint64_t, std::uint64_t) { visitChecked(block); });
    }
    constexpr std::size_t PieceSize = 1 << 16;
    const FileHandle file = openForReading(path);
    Bytes piece(PieceSize);
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get())) {
        visitChecked(ByteSpan(piece).first(count));
    }
    if (std::ferror(file.get()) != 0) failWithErrno(path);
    return true;
}

void forEachPiece(const TableStore& store, int id, unsigned side,
                  const std::function<void(ByteSpan)>& visit) {
    for (unsigned part = 0; part < partsOf(id, side); ++part) {
        forEachPiece(store.find(id, side, part), bytesOf(id, side), visit);
    }
}

}  // namespace brivok::tables
