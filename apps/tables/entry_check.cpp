#include "entry_check.h"

#include <atomic>

#include "moves.h"
#include "parallel.h"

namespace brivok::tables {

EntryCheck::EntryCheck(int itsId, TableStore& itsStore, unsigned itsThreads)
    : id(itsId),
      store(itsStore),
      threads(itsThreads),
      material(materialOf(descriptorOf(id).signature())),
      same{TableReader(material, 0, store), TableReader(material, 1, store)},
      conversions(material, store) {}

std::optional<EntryFault> EntryCheck::firstFault(unsigned side) {
    const std::vector<std::uint8_t>& bytes = store.entries(id, side);
    const std::uint64_t count = descriptorOf(id).size[side];
    const bool wide = isWide(id);
    const auto stored = [&](std::uint64_t index) { return outcomeAt(bytes, wide, index); };
    std::atomic<std::uint64_t> first = count;
    inParallel(threads, count, [&](std::uint64_t begin, std::uint64_t end) {
        for (std::uint64_t index = begin; index < end && index < first; ++index) {
            if (expectedAt(index, side) == stored(index)) continue;
            std::uint64_t known = first;
            while (index < known && !first.compare_exchange_weak(known, index)) {
            }
            return;
        }
    });
    if (first == count) return std::nullopt;
    return EntryFault{first, stored(first), expectedAt(first, side)};
}

/// What the entry should be, as far as it can hold it.
Outcome EntryCheck::expectedAt(std::uint64_t index, unsigned side) const {
    Position position;
    if (!legalPosition(id, material, side, index, position)) return NoValue;
    const Outcome outcome = bySuccessors(position);
    return isWide(id) ? outcome : brivok::tables::outcomeOf(byteOf(outcome));
}

Outcome EntryCheck::bySuccessors(const Position& position) const {
    const LegalMoves moves(material, position);
    BestReply best;
    bool canMove = false;
    moves.forEachConversion([&](const Squares& squares, const Conversion& conversion) {
        canMove = true;
        best.add(conversions.outcome(squares, conversion));
    });
    for (std::size_t man = 0; man < material.count; ++man) {
        Bitboard quiet = moves.quiet(man);
        while (quiet != 0) {
            canMove = true;
            const Position after = positionAfter(material, position, man, takeNext<White>(quiet));
            best.add(same[after.mover].outcome(after.squares, after.ep));
        }
    }
    if (!canMove) return moves.inCheck() ? lossIn(0) : Draw;
    return best.outcome();
}

}  // namespace brivok::tables
