#pragma once

#include "board/board.h"

namespace brivok {

/// Tells the legal moves of the side to move by its pins and checks, without making them. Valid
/// while the position stays.
class Legality {
public:
    explicit Legality(const Board& position);

    /// False where a king has been captured or the kings stand side by side, which no game reaches:
    /// what a move does there follows no rules, and only making it tells whether the king is in
    /// check.
    [[nodiscard]] bool known() const { return isKnown; }

    /// Whether the side to move is in check. Only if known().
    [[nodiscard]] bool inCheck() const { return checkers != 0; }

    /// Whether a pseudo-legal move is legal: whether moverInCheck() is false after it. Only if
    /// known().
    [[nodiscard]] bool allows(Move move) const {
        return allowsAll(moveFrom(move)) || allowsBound(move);
    }

    /// True if all pseudo-legal moves from the square are sure to be legal.
    [[nodiscard]] bool allowsAll(Square from) const { return (bound & bit[from]) == 0; }

    /// allows() for an en passant capture.
    [[nodiscard]] bool allowsEnPassant(Square from, Square to) const;

    /// Men, of either side, that stand alone between the king and an enemy slider.
    [[nodiscard]] Bitboard pinnedMen() const { return pinned; }

    /// Enemy sliders that would attack the king on an empty board.
    [[nodiscard]] Bitboard slidersOnLines() const { return sliders; }

private:
    template <Side S>
    void find();
    [[nodiscard]] bool allowsBound(Move move) const;
    [[nodiscard]] bool allowsKingMove(Move move) const;

    const Board& board;
    Square king;
    bool isKnown = false;
    /// The men of whose moves some may be illegal: king, pinned men, pawns that can capture en
    /// passant. All squares in check, and if nothing is known.
    Bitboard bound = ~Bitboard{0};
    Bitboard sliders = 0;   ///< see slidersOnLines()
    Bitboard pinned = 0;    ///< see pinnedMen()
    Bitboard checkers = 0;  ///< enemy men that attack the king
    Bitboard targets = 0;   ///< where a man other than the king answers all checks
};

/// Makes a pseudo-legal move if it is legal, and returns whether it is. If it is not, the position
/// stays, and the next undo record is that of the move, as after making it and taking it back: null
/// moves leave it to be seen.
[[nodiscard]] inline bool makeIfLegal(Board& board, const Legality& legality, Move move) {
    const bool sure = legality.allowsAll(moveFrom(move));
    board.makeMove(move);
    if (sure || !board.moverInCheck()) return true;
    board.unmakeMove();
    return false;
}

}  // namespace brivok
