#pragma once

#include "shell/base/application.h"

namespace brivok {

/// Runs the handler in force and replaces it whenever one asks for another protocol. Ends only by
/// ExitProgram().
[[noreturn]] void RunProtocols(Application& app);

/// Makes all hash tables anew by the settings, empty, and looks for the endgame tables; every
/// handler does so when it starts.
void allocateTables();

/// Notes in the log what standard input is.
void logConnection(Application& app);

}  // namespace brivok
