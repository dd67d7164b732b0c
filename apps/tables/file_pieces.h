#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "datacomp_symbols.h"
#include "table_store.h"

namespace brivok::tables {

/// Bytes that the entries of a table take in a file.
[[nodiscard]] unsigned entryBytesOf(int id);

/// Calls visit(bytes) for the plain bytes of a table file in order, a piece at a time; unpacks the
/// file if its name says so. Returns false if that is so and the checksums of its blocks are
/// unknown: see BlockSums. Throws AppError, also before a piece goes beyond `most` bytes,
/// whatever size the file claims or unpacks to.
bool forEachPiece(const std::filesystem::path& path, std::uint64_t most,
                  const std::function<void(ByteSpan)>& visit);

/// The same for all entries of a table with a side to move, however many files they are in.
void forEachPiece(const TableStore& store, int id, unsigned side,
                  const std::function<void(ByteSpan)>& visit);

}  // namespace brivok::tables
