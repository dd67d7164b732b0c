#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "layout.h"
#include "material.h"
#include "outcome.h"
#include "table_reader.h"

namespace brivok::tables {

/// Distances to mate of all positions of some material, by retrograde analysis from the mates
/// (Stroehlein, "Untersuchungen ueber kombinatorische Spiele", 1970).
///
/// First, every position is visited once: its captures and promotions, which lead to finished
/// tables, give it a provisional value, and its other moves are counted. Then the distances follow
/// in turn: a position that can move to a loss in n is won in n + 1, and one that can move to a win
/// in n + 1 has one fewer move that might hold. With none left it is lost. Positions that no
/// distance reaches are draws.
class Retrograde {
public:
    /// Called after each step with the distance in moves and the number of positions at it.
    using Progress = std::function<void(unsigned distance, std::uint64_t found)>;

    Retrograde(const Material& itsMaterial, const ConversionReader& itsConversions,
               unsigned itsThreads);

    void solve(const Progress& progress);

    /// For a legal position, after solve().
    [[nodiscard]] Outcome outcome(const Position& position) const {
        return outcomes[position.mover][layout.index(position)];
    }

private:
    using Bytes = std::vector<std::uint8_t>;

    [[nodiscard]] unsigned examineAll();
    [[nodiscard]] Outcome examine(const Position& position, std::uint8_t& movesLeft) const;
    [[nodiscard]] std::uint64_t winBefore(unsigned mover, unsigned distance);
    [[nodiscard]] std::uint64_t loseBefore(unsigned mover, unsigned distance);
    void settle();

    template <typename Visit>
    std::uint64_t forEachWith(Outcome outcome, unsigned mover, Visit visit);
    template <typename Visit>
    void forEachPredecessor(const Position& position, Visit visit) const;
    template <typename Visit>
    void forEachEpVariant(const Position& position, Visit visit) const;

    Material material;
    const ConversionReader& conversions;
    unsigned threads;
    Layout layout;
    bool hasEnPassant;
    /// By side to move; provisional until their distance is reached.
    std::array<Bytes, 2> outcomes;
    std::array<Bytes, 2> movesLeft;  ///< moves not known to lose; Unlosable if a conversion is safe
};

}  // namespace brivok::tables
