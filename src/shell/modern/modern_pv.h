#pragma once

#include <memory>
#include <span>
#include <string>

#include "search/search_listener.h"
#include "shell/modern/interface_moves.h"

namespace brivok {

/// Renders lines of moves on a board of its own, so that the board being searched keeps its undo
/// records, which a search reads.
///
/// A line ends where the game does: at mate and stalemate, the third occurrence of a position,
/// fifty moves, and insufficient material. At least its first move is shown. Moves are separated by
/// blanks, without numbers.
class ModernPv {
public:
    /// Standard algebraic notation, with coordinates for a move that it leaves ambiguous; or
    /// coordinates with Fischer-random castling in either style.
    enum class Notation { San, Letters, KingOntoRook };

    /// The principal variation of the search, then its continuation from the transposition table,
    /// as far as renderPv() goes.
    [[nodiscard]] std::string render(const SearchProgress& progress, Notation notation);

    /// The same for another line of the searched position.
    [[nodiscard]] std::string render(const SearchProgress& progress, std::span<const Move> line,
                                     Notation notation);

private:
    const std::unique_ptr<Board> scratch = std::make_unique<Board>();
};

}  // namespace brivok
