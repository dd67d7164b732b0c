#pragma once

#include <array>
#include <cstdint>

#include "board/bitboard.h"
#include "egtb/piece_list.h"
#include "material.h"

/// Legal moves on a board of up to five men, and moves taken back. Castling does not occur.
namespace brivok::tables {

struct Position {
    Squares squares{};
    std::uint8_t mover = 0;  ///< the side to move
    int ep = NoEnPassant;  ///< square that a pawn has just passed over, beside a pawn of the mover
};

/// Makes the tables of moves; to be called once, after buildStaticTables().
void prepareMoves();

/// Step of a side's pawns, and their home rank (0 .. 7).
[[nodiscard]] constexpr int pawnStep(unsigned side) { return side == 0 ? 8 : -8; }
[[nodiscard]] constexpr int pawnHome(unsigned side) { return side == 0 ? 1 : 6; }

/// A pawn on the square may have come there by a double step.
[[nodiscard]] constexpr bool isDoubleStep(unsigned side, Square square) {
    return (square - 2 * pawnStep(side)) >> 3 == pawnHome(side);
}

/// The square's reflection in the a1-h8 diagonal.
[[nodiscard]] constexpr Square mirrored(Square square) { return (square & 7) << 3 | square >> 3; }

[[nodiscard]] Bitboard occupiedBy(const Material& material, const Squares& squares);

/// Men on distinct squares, no pawn on an outer rank, kings apart, the side that is not to move not
/// in check; an en-passant square with its pawns and its two empty squares.
[[nodiscard]] bool isLegal(const Material& material, const Position& position);

/// The en-passant square after the pawn of place `pawn` has come to its square by a double step:
/// NoEnPassant without an enemy pawn beside it.
[[nodiscard]] int epSquareBehind(const Material& material, const Squares& squares,
                                 std::size_t pawn);

/// The position after a move that takes and promotes nothing.
[[nodiscard]] Position positionAfter(const Material& material, const Position& position,
                                     std::size_t man, Square to);

/// Squares from which a man of the side that is not to move may have come without taking or
/// promoting. Nothing is said about checks there. With an en-passant square it is the double step;
/// a position without one is not reached by a double step that would give one.
[[nodiscard]] Bitboard retractions(const Material& material, const Position& position,
                                   std::size_t man, Bitboard occupied);

/// The moves of the side to move of a legal position.
class LegalMoves {
public:
    LegalMoves(const Material& material, const Position& position);

    [[nodiscard]] bool inCheck() const { return checkers != 0; }

    /// Where a man may go without changing what men there are.
    [[nodiscard]] Bitboard quiet(std::size_t man) const {
        return targets(man) & ~occupied & ~promotionRank(man);
    }

    /// Calls visit(squares after the move, conversion) for every capture and promotion.
    template <typename Visit>
    void forEachConversion(Visit visit) const {
        for (std::size_t man = 0; man < material.count; ++man) {
            if (material.side[man] != position.mover) continue;
            Bitboard conversions = targets(man) & (theirs | promotionRank(man));
            while (conversions != 0) {
                const Square to = takeNext<White>(conversions);
                const std::size_t captured = (theirs & bit[to]) != 0 ? manOn(to) : 0;
                if ((promotionRank(man) & bit[to]) == 0) {
                    visit(moved(man, to), Conversion{captured, 0, Gone});
                } else {
                    for (const Kind into : PromotedMen) {
                        visit(moved(man, to), Conversion{captured, man, into});
                    }
                }
            }
            if (takesInPassing(man)) {
                visit(moved(man, position.ep), Conversion{manOn(passedPawn()), 0, Gone});
            }
        }
    }

private:
    [[nodiscard]] Bitboard targets(std::size_t man) const;
    [[nodiscard]] Bitboard promotionRank(std::size_t man) const {
        if (material.man[man] != Kind::Pawn) return 0;
        return rowMask[position.mover == 0 ? 7 : 0];
    }
    [[nodiscard]] bool takesInPassing(std::size_t man) const;
    [[nodiscard]] Square passedPawn() const { return position.ep - pawnStep(position.mover); }
    [[nodiscard]] std::size_t manOn(Square square) const;
    [[nodiscard]] Squares moved(std::size_t man, Square to) const {
        Squares squares = position.squares;
        squares[man] = static_cast<std::uint8_t>(to);
        return squares;
    }

    const Material& material;
    const Position& position;
    Bitboard occupied;
    Bitboard theirs = 0;
    Bitboard attacked = 0;         ///< by the opponent, the king of the mover being transparent
    Bitboard checkBlocks = ~0ULL;  ///< where a man answers the only check
    std::array<Bitboard, MaxMen> pinLine{};
    int checkers = 0;
};

}  // namespace brivok::tables
