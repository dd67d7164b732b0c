#pragma once

#include "shell/base/application.h"

namespace brivok {

/// Asks for a file of positions in pairs, the second of a pair being the first with the colours
/// swapped, and tells of each pair whether both have the same static score for the side to move.
/// Leaves the last position on the board.
void RunEvalTest(Application& app);

}  // namespace brivok
