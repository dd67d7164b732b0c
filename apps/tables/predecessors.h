#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "board/bitboard.h"
#include "layout.h"
#include "material.h"

namespace brivok::tables {

/// A set of positions with one side to move, by row of the layout.
struct PositionSet {
    explicit PositionSet(const Layout& layout)
        : rows(layout.rows()), isUsed(layout.pairs()), rowsPerPair(layout.rowsPerPair()) {}

    [[nodiscard]] Bitboard* block(unsigned pair) { return rows.data() + pair * rowsPerPair; }
    [[nodiscard]] const Bitboard* block(unsigned pair) const {
        return rows.data() + pair * rowsPerPair;
    }

    std::vector<Bitboard> rows;
    std::vector<std::uint8_t> isUsed;  ///< by pair; otherwise its block has no meaning and is empty
    std::size_t rowsPerPair;
};

/// Finds the positions from which a side can move into a set, a block at a time.
///
/// The set contains only legal positions. So a man in the way of a move's last square, or a move
/// that exposes the king, needs no thought: the set does not contain what they lead to. What does
/// is the path of a slider. A slider on a square reaches the set in some direction if the next
/// square is in the set, or if it is empty and a slider there would reach the set; this holds for
/// whole rows at once, as the last man empties a square of all rows by one mask.
class Predecessors {
public:
    Predecessors(const Material& itsMaterial, const Layout& itsLayout);

    /// Sets `from` to the positions of a pair with `mover` to move from which a move that is
    /// neither a capture nor a promotion leads into the set; it leaves out double steps that allow
    /// a capture in passing. Besides those positions there may be illegal ones.
    void find(unsigned pair, unsigned mover, const PositionSet& into, Bitboard* from) const;

    /// Whether the set has positions that the king of the mover, or its other men, could move to.
    [[nodiscard]] bool canReach(unsigned pair, unsigned mover,
                                const std::vector<std::uint8_t>& pairsOfSet) const;

private:
    /// Squares from an edge of the board to the opposite one.
    struct Ray {
        std::size_t length = 0;
        std::array<std::uint8_t, 8> squares{};
    };

    /// The men that stand still while one of the outer men (neither kings nor last) moves. The
    /// block then consists of `Inner` rows for each square of the moving man.
    struct Still {
        Bitboard blockers = 0;      ///< the kings, and the outer men before the moving one
        Bitboard noDoubleStep = 0;  ///< where a double step would end beside an enemy pawn
        bool lastIsEnemyPawn = false;
        /// Of the men between the moving one and the last, the one that numbers the rows first.
        std::array<bool, 2> innerIsEnemyPawn{};
    };

    void findByKing(unsigned pair, unsigned mover, const PositionSet& into, Bitboard* from) const;
    void findByOuter(unsigned pair, std::size_t man, const Bitboard* into, Bitboard* from) const;
    [[nodiscard]] bool isEnemyPawn(std::size_t man, unsigned mover) const {
        return material.man[man] == Kind::Pawn && material.side[man] != mover;
    }
    /// Calls visit(man, square) for the outer men before `end`, given the number of their squares.
    template <typename Visit>
    static void forEachOuter(std::size_t number, std::size_t end, Visit visit) {
        for (std::size_t man = end; man-- > 2; number >>= 6) visit(man, number & 63);
    }
    void findByLast(unsigned pair, const Bitboard* into, Bitboard* from) const;
    template <std::size_t Inner>
    void findByMan(std::size_t man, const Still& still, const Bitboard* into, Bitboard* from) const;
    template <std::size_t Inner>
    void findBySlider(const Still& still, const std::vector<Ray>& rays, const Bitboard* into,
                      Bitboard* from) const;
    template <std::size_t Inner>
    void findByPawn(unsigned mover, const Still& still, const Bitboard* into, Bitboard* from) const;

    Material material;
    const Layout& layout;
    std::size_t last;                             ///< index of the last man
    std::array<std::vector<Ray>, MaxMen> raysOf;  ///< of each slider
    /// By mover and pair: where its king can go.
    std::array<std::vector<std::vector<Layout::Reduction>>, 2> kingSteps;
};

}  // namespace brivok::tables
