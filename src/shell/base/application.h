// Every folder above src/platform may include this.
#pragma once

#include <memory>

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

}  // namespace brivok
