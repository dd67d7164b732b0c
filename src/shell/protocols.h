#pragma once

#include "shell/base/application.h"

namespace brivok {

/// Runs the current handler and replaces it whenever one asks for another protocol. Ends only
/// through ExitProgram().
[[noreturn]] void RunProtocols(Application& app);

/// Replaces all hash tables by empty ones of the configured sizes and looks for endgame tables.
/// Every handler calls this when it starts.
void allocateTables();

/// Logs what standard input is.
void logConnection(Application& app);

}  // namespace brivok
