#pragma once

#include <cstddef>

#include "board/bitboard.h"
#include "layout.h"
#include "material.h"

namespace brivok::tables {

/// The exchange of colours, for a material whose two sides are the same and have no pawns. A
/// position with one side to move is then worth as much as the exchanged one with the other to
/// move, so that one side to move is enough.
class ColourExchange {
public:
    ColourExchange(const Material& material, const Layout& itsLayout);

    /// The pair of kings of the exchanged positions of a pair, and the symmetry that brings them
    /// there.
    [[nodiscard]] Layout::Reduction of(unsigned pair) const;

    /// Sets the block of a pair to the positions whose exchanged ones are in the block of
    /// of(pair).pair.
    void exchange(unsigned pair, const Bitboard* exchanged, Bitboard* block) const;

private:
    const Layout& layout;
    std::size_t menOfSide;  ///< one or two, besides the king
};

}  // namespace brivok::tables
