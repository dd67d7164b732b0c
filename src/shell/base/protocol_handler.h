// All folders above src/platform may include this.
#pragma once

#include <string_view>

namespace brivok {

class Application;

/// One protocol: receives the input lines and answers them.
class ProtocolHandler {
public:
    /// The application must outlive the handler.
    explicit ProtocolHandler(Application& application) : app(application) {}
    ProtocolHandler(const ProtocolHandler&) = delete;
    ProtocolHandler& operator=(const ProtocolHandler&) = delete;
    virtual ~ProtocolHandler() = default;

    /// Handles one input line, newline included. A running search also calls this, on its own
    /// stack, for each line it finds when it polls.
    virtual void ProcessCommand(std::string_view line) = 0;

    /// Reads and handles lines until `done` is set.
    virtual void Run() = 0;

    Application& app;
    bool done = false;
};

}  // namespace brivok
