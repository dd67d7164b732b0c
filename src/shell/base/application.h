// Every folder above src/platform may include this.
#pragma once

#include <memory>
#include <string>

#include "shell/base/input_buffer.h"
#include "shell/base/logger.h"
#include "shell/base/protocol_handler.h"

namespace brivok {

class Application;

/// The language that the program is spoken to in.
enum class Protocol { None = 0, Extra = 1, Uci = 2, WinBoard = 3 };

/// The process: what it speaks, who answers, where it logs. One instance, behind theApplication.
class Application {
public:
    Application();

    Protocol currentProtocol = Protocol::Extra;   ///< of `handler`
    Protocol requestedProtocol = Protocol::None;  ///< the handler that a handler asks for
    InputBuffer input;                            ///< of this run
    Logger logger{*this};                         ///< of this run
    std::unique_ptr<ProtocolHandler> handler;     ///< the one in force; none before the first
};

/// The one Application, made by the entry of the program.
extern std::unique_ptr<Application> theApplication;

/// The usual way out of the process: deletes the handler, which may still be on the call stack,
/// closes the log and ends with `code` (0 for "quit", 1 for every failure). Where a test's platform
/// throws instead of ending, nothing on the way up may touch the handler or the application.
[[noreturn]] void ExitProgram(int code);

/// The other one, with code 1, where data are damaged and nothing above is to be told: prints
/// "*** " and the text, flushes all streams and ends on the spot.
[[noreturn]] void EndAtOnce(const std::string& text);

}  // namespace brivok
