#pragma once

#include "board/board.h"
#include "shell/base/application.h"

namespace brivok {

/// Counts the legal move tree to `depth` plies and prints it, one line a depth up to the first
/// empty one.
void perft(Application& app, Board& board, int depth);

/// Prints the legal moves of the position, each followed by a blank, then a newline, straight to
/// standard output.
void listLegalMoves(Board& board);

}  // namespace brivok
