#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "../common/files.h"
#include "datacomp_symbols.h"
#include "table_record.h"

namespace brivok::tables {

/// Writes the contents of a file that may be in several parts of a fixed size, as they come.
class PartedFile {
public:
    /// `names` are those of the parts: each but the last gets `partBytes`.
    PartedFile(std::vector<std::filesystem::path> itsNames, std::uint64_t itsPartBytes)
        : names(std::move(itsNames)), partBytes(itsPartBytes) {}

    void write(ByteSpan bytes);

    /// The parts appear under their names; packed files of these parts, which were found wrong or
    /// were not looked at, go away.
    void finish();

private:
    std::vector<std::filesystem::path> names;
    std::uint64_t partBytes;
    std::uint64_t room = 0;  ///< bytes that the current part still takes
    std::vector<std::unique_ptr<NewFile>> parts;
};

/// The files of a table that is being made: written, counted and summed as their contents come, so
/// that they need not be held in memory.
class NewTable {
public:
    NewTable(int itsId, const std::filesystem::path& folder);

    /// Appends to the file of a side. The first side's comes first.
    void write(unsigned side, ByteSpan bytes);

    /// The files appear under their names. Returns the record of the table.
    [[nodiscard]] TableRecord finish(const Making& making);

private:
    int id;
    std::vector<PartedFile> files;   ///< by side
    std::vector<FileTally> tallies;  ///< by side
};

}  // namespace brivok::tables
