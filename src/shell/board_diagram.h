#pragma once

#include "board/board.h"
#include "shell/base/application.h"

namespace brivok {

/// Prints the board with White at the bottom. "#" on the edge marks the home squares of men that
/// may still castle, and the pawn row of the side to move.
void PrintBoard(Application& app, const Board& board);

}  // namespace brivok
