#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "egtb/datacomp.h"
#include "egtb/descriptors.h"

namespace brivok {

struct CacheBlock;

inline constexpr std::size_t MaxParts = 18;      ///< files that one side of a table is split into
inline constexpr std::size_t CacheBuckets = 32;  ///< a power of two
inline constexpr unsigned PartBytesLog = 31;     ///< every part but the last has 2^31 bytes

/// Closes the file of a TableFile.
struct CloseFile {
    /// Ignores errors: the files are only read.
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
/// An open file, closed with its owner.
using TableFile = std::unique_ptr<std::FILE, CloseFile>;

/// One file of a table: whole, or one part of a split table.
struct TablePart {
    std::string fileName;                   ///< path as found; empty means absent
    TableFile file;                         ///< opened when its first chunk is needed
    std::unique_ptr<DatacompFile> decoder;  ///< present when the file is compressed
};

/// One side of a table of which a file has been registered.
struct TableSide {
    std::array<TablePart, MaxParts> parts;  ///< from the first; see partCount()
    /// Heads of the chains of the cached chunks, by the low bits of the chunk's number.
    std::array<CacheBlock*, CacheBuckets> cacheBuckets{};
};

/// The run-time state of a table, beside its constant descriptor: none for a side that has no
/// file. A table that is the same for both sides has side 0 alone.
using TableSides = std::array<std::unique_ptr<TableSide>, 2>;
extern std::array<TableSides, TableCount> tableSides;  ///< by id

/// Memory for the decoding of one block; there is none before a compressed file is registered.
extern std::unique_ptr<DecodeScratch> decodeScratch;

/// Index in `tableSides` of what serves a side to move.
[[nodiscard]] inline int fileSide(const TablebaseDescriptor& table, int side) {
    return (table.flags & SameForBoth) != 0 ? 0 : side;
}

/// How many files a side of the table consists of.
[[nodiscard]] std::size_t partCount(const TablebaseDescriptor& table, int side);

/// Opens a file for reading, without a buffer of its own. None when it can't be opened.
[[nodiscard]] TableFile openTableFile(const std::string& path);

/// Closes every open table file; each is opened again when it is needed.
void CloseTableFiles();

}  // namespace brivok
