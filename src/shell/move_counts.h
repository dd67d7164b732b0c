#pragma once

#include <cstddef>

#include "board/board.h"
#include "shell/base/application.h"

namespace brivok {

/// Counts the legal move tree to `depth` plies and prints one line per depth, up to the first empty
/// depth.
void perft(Application& app, Board& board, std::size_t depth);

/// Prints the legal moves, each followed by a blank, and a newline, straight to standard output.
void listLegalMoves(Board& board);

}  // namespace brivok
