#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "../common/scratch_memory.h"
#include "colour_exchange.h"
#include "conversion_worths.h"
#include "layout.h"
#include "material.h"
#include "moves.h"
#include "outcome.h"
#include "passing.h"
#include "predecessors.h"
#include "row.h"
#include "table_store.h"
#include "worth_places.h"

namespace brivok::tables {

/// Distances to mate of all positions of some material, by retrograde analysis from the mates
/// (Stroehlein, "Untersuchungen ueber kombinatorische Spiele", 1970).
///
/// First, every position gets the worth of its captures and promotions, which lead to finished
/// tables. Then the distances follow in turn: a position that can move to a loss in n is won in
/// n + 1, and one whose moves all lead to wins in n or less is lost in n. Captures and promotions
/// join in at their distance. Positions that no distance reaches are draws.
///
/// The work is done on sets of positions, 64 in a word, and on the block of one pair of kings at a
/// time. A block fits the processor's caches, and threads write to no block but their own. A block
/// is left out at a distance that brings nothing new to it or to those that a king's step away.
///
/// Positions with an en passant square are few, and are kept in lists: see passing.h.
///
/// If both sides have the same men, and no pawns, only positions with the first side to move are
/// kept. Those with the other side to move are the same with colours exchanged.
///
/// W is Worth, or WideWorth if mates may be longer than a byte can hold. The same space has the
/// entries for the files in the end, of one or of two bytes.
template <typename W>
class Retrograde {
public:
    /// Called after each step with the distance in moves and the number of positions at it.
    using Progress = std::function<void(unsigned distance, std::uint64_t found)>;

    /// The distances are kept in files in the scratch folder if there is one, otherwise in memory.
    Retrograde(int id, TableStore& store, unsigned itsThreads,
               const std::filesystem::path& scratch = {});

    /// Throws AppError if a mate is longer than W can hold.
    void solve(const Progress& progress);

    /// The entry of a file for a position without an en passant square, after solve(). The squares
    /// must be distinct and the kings not adjacent, but the position may be illegal.
    [[nodiscard]] W plainEntry(const Squares& squares, unsigned mover) const {
        const std::uint64_t index = layout.index(squares);
        return worthsOf(layout.pairOf(index), mover)[places.of(layout.placeInBlock(index))];
    }

    /// For a legal position with an en passant square, after solve().
    [[nodiscard]] Outcome passingOutcome(const Position& position) const;

private:
    using WorthSet = std::bitset<256>;
    using Block = std::vector<Bitboard>;

    /// What is known of the positions with one side to move.
    struct Side {
        explicit Side(const Layout& layout);

        PositionSet notWon;                          ///< legal and not known to be won
        PositionSet open;                            ///< of these, those that may still be lost
        PositionSet newLost;                         ///< in the current distance
        std::vector<std::uint8_t> hasNewWins;        ///< by pair
        std::vector<WorthSet> expected;              ///< worths of conversions, by group of rows
        std::vector<WorthSet> expectedPassing;       ///< of captures in passing, by pair
        std::vector<std::vector<Passing>> passings;  ///< by pair
    };

    template <typename Work>
    std::uint64_t forBothSides(Work work);
    template <typename Work>
    std::uint64_t inBlocks(Work work);
    void examine(unsigned pair);
    void examineRow(const Row& row, unsigned mover);
    [[nodiscard]] unsigned furthestConversion() const;
    [[nodiscard]] std::uint64_t findMates(unsigned pair, unsigned mover, Block& from);
    [[nodiscard]] std::uint64_t findLosses(unsigned pair, unsigned mover, unsigned distance,
                                           Block& from);
    [[nodiscard]] std::uint64_t findWins(unsigned pair, unsigned mover, unsigned distance,
                                         Block& from);
    template <typename Test>
    void findPredecessors(unsigned pair, unsigned mover, const PositionSet& into, Test isIn,
                          Block& from) const;
    void findMoves(unsigned pair, unsigned mover, const PositionSet& into, Block& from) const;
    [[nodiscard]] bool canReach(unsigned pair, unsigned mover,
                                const std::vector<std::uint8_t>& pairsOfSet) const;
    void addConversions(unsigned pair, unsigned mover, W worth, Block& from) const;
    [[nodiscard]] bool expects(unsigned pair, unsigned mover, W worth) const;
    [[nodiscard]] bool isWon(unsigned pair, unsigned mover, const Passing& passing) const;
    [[nodiscard]] bool isLost(unsigned pair, unsigned mover, const Passing& passing,
                              unsigned distance) const;
    [[nodiscard]] std::uint64_t tally(unsigned pair, std::size_t row, Bitboard found) const;
    void requireNoFurtherWins();
    void settle(unsigned pair, unsigned mover);

    /// With the other side to move.
    [[nodiscard]] const Side& opponents(unsigned mover) const {
        return sides[colours ? 0 : mover ^ 1U];
    }
    [[nodiscard]] std::uint64_t firstOf(unsigned pair) const {
        return std::uint64_t{pair} * rowsPerPair << 6;
    }
    [[nodiscard]] W* worthsOf(unsigned pair, unsigned mover) const {
        return static_cast<W*>(worths[mover]->data()) + pair * places.perPair();
    }

    Material material;
    unsigned threads;
    Layout layout;
    std::size_t rowsPerPair;
    std::size_t groupsPerPair;              ///< of rows, for `expected`
    std::optional<ColourExchange> colours;  ///< if one side to move stands for both
    Predecessors predecessors;
    WorthPlaces places;
    ConversionWorths conversions;
    std::uint64_t twins;  ///< numbers of a position by exchange of like men
    std::vector<Side> sides;
    /// By side to move: the worth of conversions until the distance is known; then of the position;
    /// in the end the entries of the files.
    std::vector<std::unique_ptr<ScratchMemory>> worths;
};

}  // namespace brivok::tables
