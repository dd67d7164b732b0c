#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "forward_rows.h"
#include "table_entry.h"
#include "table_store.h"

namespace brivok::tables {

/// Compares all entries of a table of up to five men with their successors, by rows.
///
/// With the generator it shares how men move, and where an entry is (Layout and FileWalk), of which
/// samples are compared with the index of the position. The rest stays apart on purpose, even where
/// it does much the same, as ConvertedWorths do: a fault of the generator must not hide itself.
class FullCheck {
public:
    FullCheck(int itsId, TableStore& store, unsigned itsThreads);

    /// The first wrong entry of the file for a side to move. To be asked for each file in turn.
    [[nodiscard]] std::optional<EntryFault> firstFault(unsigned side);

    /// A position that is won in 128 moves, which no byte stands for, after all files are found
    /// right otherwise.
    [[nodiscard]] std::optional<Position> winTooLong() const;

private:
    void checkBlock(unsigned pair, unsigned side);
    void checkLookedUp(std::uint64_t number, unsigned side);
    void checkStrays(unsigned side);
    void checkPassing(unsigned side);
    void note(std::uint64_t index, unsigned side);
    void noteNumber(std::uint64_t number, unsigned side);
    [[nodiscard]] Outcome expectedAt(std::uint64_t index, unsigned side) const;

    int id;
    unsigned threads;
    CheckedTable table;
    std::atomic<std::uint64_t> first = 0;  ///< the first wrong entry so far
    std::atomic<bool> numberingsDiffer = false;
    std::mutex guard;
    std::vector<Position> tooLong;  ///< legal positions that are lost in 127 moves
};

}  // namespace brivok::tables
