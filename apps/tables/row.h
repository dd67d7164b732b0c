#pragma once

#include <cstddef>

#include "board/bitboard.h"
#include "layout.h"
#include "material.h"

namespace brivok::tables {

/// The positions of a layout that differ in the square of the last man.
struct Row {
    Row(const Material& itsMaterial, const Layout& layout, unsigned itsPair, std::size_t itsNumber);

    /// The squares of the last man where a side attacks the king of the other. Requires that there
    /// are possible() ones.
    [[nodiscard]] Bitboard attackedBy(unsigned side) const;

    /// The squares of the last man where the side not to move is not in check, out of possible().
    [[nodiscard]] Bitboard legal(unsigned mover) const {
        return possible == 0 ? 0 : possible & ~attackedBy(mover);
    }

    const Material& material;
    unsigned pair;
    std::size_t number;         ///< in the block of the pair
    Squares squares;            ///< of the other men
    Bitboard occupied = 0;      ///< by them
    Bitboard possible = ~0ULL;  ///< squares left for the last man; none if two others share one
};

}  // namespace brivok::tables
