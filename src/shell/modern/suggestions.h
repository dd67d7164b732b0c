#pragma once

#include <string>

#include "board/board.h"

/// @file
/// What the engine tells a player who asks for advice.
namespace brivok {

/// A good move of theBoard in SAN: from the transposition table or the book, otherwise from a short
/// search. Empty if there is no legal move. Call while no search is running.
[[nodiscard]] std::string suggestMove();

/// What the opening book knows about the position: a line per move, each beginning with a blank,
/// and an empty line.
[[nodiscard]] std::string bookPage(Board& board);

}  // namespace brivok
