#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "shell/base/application.h"
#include "shell/base/protocol_handler.h"
#include "shell/command_table.h"
#include "shell/console_listener.h"

namespace brivok {

/// Console mode, in which every run starts: silent until the first line of an interface replaces
/// it. The log calls it "Extra".
class ExtraHandler final : public ProtocolHandler {
public:
    /// Allocates the tables by the settings.
    explicit ExtraHandler(Application& application);
    ~ExtraHandler() override;
    void ProcessCommand(std::string_view line) override;
    void Run() override;

    [[nodiscard]] static std::vector<std::string_view> commands();

private:
    using Words = std::vector<std::string>;

    [[nodiscard]] static CommandTable<ExtraHandler, Words> table();
    void speak(Protocol protocol);
    void runTest(void (*test)(Application&, SearchListener&));

    ConsoleListener listener{app};
    bool testing = false;  ///< a test is running and its searches read the input
};

}  // namespace brivok
