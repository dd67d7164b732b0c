#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "egtb/piece_list.h"
#include "egtb/table_index.h"
#include "material.h"
#include "outcome.h"
#include "table_store.h"

namespace brivok::tables {

/// Finds the table entries of positions of some material, ignoring men that are Gone.
class EntryFinder {
public:
    struct Entry {
        unsigned side = 0;  ///< of the file
        std::uint64_t index = NoIndex;
    };

    EntryFinder() = default;
    explicit EntryFinder(const Material& material);

    /// The id of the table; 0 for bare kings, which have none.
    [[nodiscard]] int table() const { return id; }

    /// The side of the table that is to move if `mover` is.
    [[nodiscard]] unsigned sideOf(unsigned mover) const { return swapped ? mover ^ 1U : mover; }

    [[nodiscard]] Entry find(const Squares& squares, unsigned mover, int ep) const {
        std::array<PieceList, 2> lists{};
        for (std::size_t i = 0; i < count; ++i) {
            lists[men[i].list][men[i].slot] = squares[men[i].man];
        }
        const unsigned side = sideOf(mover);
        const std::uint64_t index = tableIndex(id, side, lists[0], lists[1], ep, swapped ? 1 : 0);
        return {isSameForBoth(id) ? 0 : side, index};
    }

private:
    /// Where the square of a man goes.
    struct Slot {
        std::uint8_t man = 0;
        std::uint8_t list = 0;
        std::uint8_t slot = 0;
    };

    int id = 0;
    bool swapped = false;
    std::array<Slot, MaxMen> men{};  ///< those still on the board
    std::size_t count = 0;
};

/// The outcome of an entry, of two bytes if `wide`; NoValue if there is none of this index.
[[nodiscard]] inline Outcome outcomeAt(const std::vector<std::uint8_t>& bytes, bool wide,
                                       std::uint64_t index) {
    if (!wide) return index < bytes.size() ? outcomeOf(bytes[index]) : NoValue;
    if (index >= bytes.size() / 2) return NoValue;
    return outcomeOfWide(static_cast<std::uint16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8));
}

/// Looks up positions of some material with one side to move in their table.
class TableReader {
public:
    TableReader() = default;
    TableReader(const Material& material, unsigned itsMover, TableStore& store);

    /// NoValue also if the position has no entry.
    [[nodiscard]] Outcome outcome(const Squares& squares, int ep) const {
        if (finder.table() == 0) return Draw;
        const std::uint64_t index = finder.find(squares, mover, ep).index;
        return outcomeAt(*entries, isWide(finder.table()), index);
    }

private:
    EntryFinder finder;
    unsigned mover = 0;
    const std::vector<std::uint8_t>* entries = nullptr;
};

/// The side to move after a conversion.
[[nodiscard]] unsigned moverAfter(const Material& material, const Conversion& conversion);

/// Looks up the results of a material's conversions.
class ConversionReader {
public:
    ConversionReader(const Material& material, TableStore& store);

    /// From the view of the side to move after the conversion.
    [[nodiscard]] Outcome outcome(const Squares& squares, const Conversion& conversion) const {
        return readers[placeOf(conversion)].outcome(squares, NoEnPassant);
    }

private:
    [[nodiscard]] static std::size_t placeOf(const Conversion& conversion) {
        return (conversion.captured * MaxMen + conversion.promoted) * PieceCodes +
               static_cast<std::size_t>(conversion.into);
    }

    std::array<TableReader, MaxMen * MaxMen * PieceCodes> readers{};
};

}  // namespace brivok::tables
