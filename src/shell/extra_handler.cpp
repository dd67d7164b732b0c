#include "shell/extra_handler.h"

#include <string>

#include "board/board.h"
#include "shell/base/console.h"
#include "shell/base/words.h"
#include "shell/protocols.h"
#include "tools/epd_runner.h"
#include "tools/eval_test.h"

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
    if (words[0] == "evaltest") {
        runTest([](Application& application, SearchListener&) { RunEvalTest(application); });
    }
    if (words[0] == "epdtest") runTest(RunEpdTest);
}

void ExtraHandler::runTest(void (*test)(Application&, SearchListener&)) {
    // A line that a search of a test has met cannot start another: the board is in use.
    if (testing) return;
    testing = true;
    test(app, listener);
    testing = false;
    theBoard.NewGame();
}

void ExtraHandler::Run() { RunReadLoop(*this); }

}  // namespace brivok
