#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "material.h"
#include "outcome.h"
#include "table_entry.h"
#include "table_reader.h"
#include "table_store.h"

namespace brivok::tables {

/// Compares all entries of a table with their successors, one by one. Slow, but it takes no memory
/// besides the files: for tables of six men, and for entries of two bytes.
class EntryCheck {
public:
    EntryCheck(int itsId, TableStore& itsStore, unsigned itsThreads);

    /// The first wrong entry of the file for a side to move.
    [[nodiscard]] std::optional<EntryFault> firstFault(unsigned side);

private:
    [[nodiscard]] Outcome expectedAt(std::uint64_t index, unsigned side) const;
    [[nodiscard]] Outcome bySuccessors(const Position& position) const;

    int id;
    TableStore& store;
    unsigned threads;
    Material material;
    std::array<TableReader, 2> same;  ///< by side to move
    ConversionReader conversions;
};

}  // namespace brivok::tables
