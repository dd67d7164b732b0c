#include "row.h"

#include "board/static_tables.h"
#include "geometry.h"

namespace brivok::tables {

Row::Row(const Material& itsMaterial, const Layout& layout, unsigned itsPair, std::size_t itsNumber)
    : material(itsMaterial),
      pair(itsPair),
      number(itsNumber),
      squares(layout.squares((std::uint64_t{pair} * layout.rowsPerPair() + number) << 6)) {
    const auto forbidden = [this](std::size_t man) {
        return occupied | (material.man[man] == Kind::Pawn ? OuterRanks : 0);
    };
    const std::size_t last = material.count - 1;
    for (std::size_t man = 0; man < last; ++man) {
        if ((forbidden(man) & bit[squares[man]]) != 0) possible = 0;
        occupied |= bit[squares[man]];
    }
    possible &= ~forbidden(last);
}

Bitboard Row::attackedBy(unsigned side) const {
    const Square king = squares[side ^ 1U];
    const std::size_t last = material.count - 1;
    Bitboard attacked = 0;
    for (std::size_t man = 2; man < last; ++man) {
        if (material.side[man] != side) continue;
        const Square from = squares[man];
        if ((attacksOf(material.man[man], side, from, occupied) & bit[king]) != 0) {
            attacked |= ~between[from][king];
        }
    }
    if (material.side[last] != side) return attacked;
    // Attacks are mutual, except that pawns look the other way.
    return attacked | attacksOf(material.man[last], side ^ 1U, king, occupied);
}

}  // namespace brivok::tables
