#include "shell/extra_handler.h"

#include <string>

#include "shell/base/console.h"
#include "shell/base/words.h"
#include "shell/protocols.h"

namespace brivok {

ExtraHandler::ExtraHandler(Application& application) : ProtocolHandler(application) {
    allocateTables();
    LogOnly(app, "Extra support started\n");
    logConnection(app);
}

ExtraHandler::~ExtraHandler() { LogOnly(app, "Extra support closed\n"); }

void ExtraHandler::ProcessCommand(std::string_view line) {
    const std::vector<std::string> words = SplitWords(line);
    LogOnly(app, "Extra Received: %s\n", std::string(line).c_str());
    if (words.empty()) return;
    if (words[0] == "quit") ExitProgram(0);
    if (words[0] == "xboard") {
        done = true;
        app.requestedProtocol = Protocol::WinBoard;
    } else if (words[0] == "uci") {
        done = true;
        app.requestedProtocol = Protocol::Uci;
    }
}

void ExtraHandler::Run() { RunReadLoop(*this); }

}  // namespace brivok
