// Every folder above src/platform may include this.
#pragma once

#include <string_view>

namespace brivok {

class Application;

/// One protocol: takes the input lines and answers them.
class ProtocolHandler {
public:
    /// Answers through the application, which outlives the handler.
    explicit ProtocolHandler(Application& application) : app(application) {}
    ProtocolHandler(const ProtocolHandler&) = delete;
    ProtocolHandler& operator=(const ProtocolHandler&) = delete;
    virtual ~ProtocolHandler() = default;

    /// Handles one input line, its newline included. A running search calls it too, on its own
    /// stack, for each line that it meets when it polls.
    virtual void ProcessCommand(std::string_view line) = 0;

    /// Reads and handles lines until `done` is set.
    virtual void Run() = 0;

    Application& app;   ///< the one it answers through
    bool done = false;  ///< makes Run return
};

}  // namespace brivok
