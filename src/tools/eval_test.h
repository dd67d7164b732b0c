#pragma once

#include "shell/base/application.h"

namespace brivok {

/// Asks for a file of positions in pairs, the second with the colours of the first swapped, and
/// reports for each pair whether both have the same static score for the side to move. The last
/// position stays on the board.
void RunEvalTest(Application& app);

}  // namespace brivok
