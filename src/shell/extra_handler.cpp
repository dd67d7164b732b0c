#include "shell/extra_handler.h"

#include "board/board.h"
#include "shell/base/console.h"
#include "shell/base/report.h"
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

CommandTable<ExtraHandler, ExtraHandler::Words> ExtraHandler::table() {
    static constexpr Command<ExtraHandler, Words> Commands[] = {
        {"quit", [](ExtraHandler&, const Words&) { ExitProgram(0); }},
        {"xboard", [](ExtraHandler& self, const Words&) { self.speak(Protocol::WinBoard); }},
        {"uci", [](ExtraHandler& self, const Words&) { self.speak(Protocol::Uci); }},
        {"evaltest",
         [](ExtraHandler& self, const Words&) {
             self.runTest([](Application& app, SearchListener&) { RunEvalTest(app); });
         }},
        {"epdtest", [](ExtraHandler& self, const Words&) { self.runTest(RunEpdTest); }},
    };
    return Commands;
}

std::vector<std::string_view> ExtraHandler::commands() { return wordsOf(table()); }

void ExtraHandler::ProcessCommand(std::string_view line) {
    const Words words = SplitWords(line);
    LogOnly(app, "Extra Received: %s\n", std::string(line).c_str());
    if (!words.empty()) (void)execute(table(), words[0], *this, words);
}

void ExtraHandler::speak(Protocol protocol) {
    done = true;
    app.requestedProtocol = protocol;
}

void ExtraHandler::runTest(void (*test)(Application&, SearchListener&)) {
    // A line read during a test's search cannot start another test: the board is in use.
    if (testing) return;
    testing = true;
    test(app, listener);
    testing = false;
    theBoard.NewGame();
}

void ExtraHandler::Run() { RunReadLoop(*this); }

}  // namespace brivok
