#pragma once

#include <memory>

#include "shell/base/application.h"

namespace brivok {

/// Makes the handler of a protocol; nullptr if there is none.
using HandlerMaker = std::unique_ptr<ProtocolHandler> (*)(Application& app, Protocol protocol);

/// The handlers of this folder.
[[nodiscard]] std::unique_ptr<ProtocolHandler> makePlainHandler(Application& app,
                                                                Protocol protocol);

/// Runs the current handler and replaces it whenever one asks for another protocol. Ends only
/// through ExitProgram().
[[noreturn]] void RunProtocols(Application& app, HandlerMaker makeHandler = makePlainHandler);

/// Replaces all hash tables by empty ones of the configured sizes and looks for endgame tables.
/// Every handler calls this when it starts.
void allocateTables();

/// Logs what standard input is.
void logConnection(Application& app);

}  // namespace brivok
