#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "layout.h"
#include "material.h"
#include "outcome.h"

namespace brivok::tables {

/// The entries of a table without an en passant square, as what a move that leads to the position
/// is worth to the side that makes it: NoWorth if the entry is broken, and where there is none. A
/// byte of a file has one such worth, and each worth one byte. They are numbered by a Layout, so
/// that the positions one move away lie close together.
class LeavingWorths {
public:
    /// Reads the entries of the file for `mover` to move.
    LeavingWorths(int id, const Material& material, const Layout& layout, unsigned mover,
                  std::span<const std::uint8_t> entries, unsigned threads);

    [[nodiscard]] const Worth* block(unsigned pair) const {
        return &worths[std::size_t{pair} * blockSize];
    }
    [[nodiscard]] Worth operator[](std::uint64_t number) const { return worths[number]; }

    /// The first entries of the file, those without an en passant square.
    [[nodiscard]] std::uint64_t entryCount() const { return plainEntries; }

    /// Entries with a value for which there is no position.
    [[nodiscard]] std::uint64_t strayValues() const { return strays; }

private:
    std::size_t blockSize;
    std::unique_ptr<Worth[]> worths;
    std::uint64_t plainEntries = 0;
    std::uint64_t strays = 0;
};

}  // namespace brivok::tables
