#pragma once

#include <span>
#include <string>

#include "search/search_listener.h"
#include "shell/modern/interface_moves.h"

namespace brivok {

/// Renders lines of moves on a board of its own, so that the board being searched keeps its undo
/// records, which a search reads.
class ModernPv {
public:
    enum class Notation { San, Letters, KingOntoRook };

    /// The principal variation of the search, then its continuation from the transposition table,
    /// as far as renderPv() goes but not beyond the end of the game. Moves are separated by blanks,
    /// without numbers.
    [[nodiscard]] std::string render(const SearchProgress& progress, Notation notation);

    /// The same for another line of the searched position.
    [[nodiscard]] std::string render(const SearchProgress& progress, std::span<const Move> line,
                                     Notation notation);
};

}  // namespace brivok
