#pragma once

#include "board/board.h"
#include "shell/base/application.h"

namespace brivok {

/// Prints the board with White at the bottom. Home squares of men that may still castle are marked
/// "#" on the edge, and so is the row of pawns of the side to move.
void PrintBoard(Application& app, const Board& board);

}  // namespace brivok
