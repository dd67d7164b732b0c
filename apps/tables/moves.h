#pragma once

#include <array>
#include <cstdint>

#include "board/bitboard.h"
#include "egtb/piece_list.h"
#include "geometry.h"
#include "material.h"

/// Positions and their legal moves on a board with few men. There is no castling.
namespace brivok::tables {

struct Position {
    Squares squares{};
    std::uint8_t mover = 0;  ///< the side to move
    int ep = NoEnPassant;    ///< square just passed over by a pawn, next to a pawn of the mover
};

/// Requires distinct squares, no pawn on an outer rank, kings not adjacent, the side not to move
/// not in check; with an en passant square, its pawns and its two empty squares.
[[nodiscard]] bool isLegal(const Material& material, const Position& position);

/// The en passant square after the pawn with index `pawn` has made a double step to its square;
/// NoEnPassant if no enemy pawn stands beside it.
[[nodiscard]] int epSquareBehind(const Material& material, const Squares& squares,
                                 std::size_t pawn);

/// The position after a move that is neither a capture nor a promotion.
[[nodiscard]] Position positionAfter(const Material& material, const Position& position,
                                     std::size_t man, Square to);

/// The moves in a legal position.
class LegalMoves {
public:
    LegalMoves(const Material& material, const Position& position);

    [[nodiscard]] bool inCheck() const { return checkers != 0; }

    /// Target squares of a man, without captures and promotions.
    [[nodiscard]] Bitboard quiet(std::size_t man) const {
        return targets(man) & ~occupied & ~promotionRank(man);
    }

    /// Calls visit(squares after the move, conversion) for each capture and promotion.
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
    Bitboard attacked = 0;         ///< by the opponent, looking through the mover's king
    Bitboard checkBlocks = ~0ULL;  ///< where a man can answer a single check
    std::array<Bitboard, MaxMen> pinLine{};
    int checkers = 0;
};

}  // namespace brivok::tables
