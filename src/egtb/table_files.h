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

inline constexpr std::size_t MaxParts = 18;      ///< files per side of a split table
inline constexpr std::size_t CacheBuckets = 32;  ///< a power of two
inline constexpr unsigned PartBytesLog = 31;     ///< every part but the last has 2^31 bytes

struct CloseFile {
    /// Ignores errors: files are only read.
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using TableFile = std::unique_ptr<std::FILE, CloseFile>;

/// One file of a table: the whole table or one part of a split one.
struct TablePart {
    std::string fileName;                   ///< path as found; empty if absent
    TableFile file;                         ///< opened when first needed
    std::unique_ptr<DatacompFile> decoder;  ///< null unless the file is compressed
};

/// One side of a table with at least one registered file.
struct TableSide {
    std::array<TablePart, MaxParts> parts;  ///< see partCount()
    /// Chains of cached chunks, by the low bits of the chunk number.
    std::array<CacheBlock*, CacheBuckets> cacheBuckets{};
};

/// The run-time state of a table, beside its constant descriptor. A side without files is null; a
/// table with one file for both sides has only side 0.
using TableSides = std::array<std::unique_ptr<TableSide>, 2>;
extern std::array<TableSides, TableCount> tableSides;  ///< by id

/// The state of one side (0 or 1) of a table; null if that side has no files.
[[nodiscard]] inline std::unique_ptr<TableSide>& tableSide(int id, unsigned side) {
    return tableSides[static_cast<std::size_t>(id)][side];
}

/// Memory for decoding one block; null until a compressed file is registered.
extern std::unique_ptr<DecodeScratch> decodeScratch;

/// Index in `tableSides` that serves a side to move.
[[nodiscard]] inline unsigned fileSide(const TablebaseDescriptor& table, unsigned side) {
    return (table.flags & SameForBoth) != 0 ? 0 : side;
}

/// Number of files of one side of the table.
[[nodiscard]] std::size_t partCount(const TablebaseDescriptor& table, unsigned side);

/// Opens a file for reading, unbuffered. Null if that fails.
[[nodiscard]] TableFile openTableFile(const std::string& path);

/// Closes all open table files; they are reopened when needed.
void CloseTableFiles();

}  // namespace brivok
