// All folders above src/platform may include this.
#pragma once

#include <memory>

#include "shell/base/input_buffer.h"
#include "shell/base/logger.h"
#include "shell/base/protocol_handler.h"

namespace brivok {

class Application;

/// Who the program is talking to.
enum class Protocol { None = 0, Extra = 1, Uci = 2, WinBoard = 3 };

/// The process: the protocol it speaks, its handler and its log. One instance, in theApplication.
class Application {
public:
    Application();

    Protocol currentProtocol = Protocol::Extra;   ///< protocol of `handler`
    Protocol requestedProtocol = Protocol::None;  ///< protocol that the handler asks to switch to
    InputBuffer input;
    Logger logger{*this};
    std::unique_ptr<ProtocolHandler> handler;  ///< the current one; null before the first
};

/// Created in main.cpp.
extern std::unique_ptr<Application> theApplication;

}  // namespace brivok
