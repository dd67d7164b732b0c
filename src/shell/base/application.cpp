#include "shell/base/application.h"

#include <cstdio>
#include <cstdlib>

#include "platform/platform.h"
#include "shell/base/console.h"

namespace brivok {

std::unique_ptr<Application> theApplication;

Application::Application() {
    platform::surviveClosedOutput();
    // An interface sees each line at once. Input is read past the streams altogether.
    std::fflush(nullptr);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
}

void ExitProgram(int code) {
    if (theApplication != nullptr) {
        theApplication->handler.reset();
        theApplication.reset();
    }
    std::exit(code);
}

void EndAtOnce(const std::string& text) {
    PrintUnlogged("*** " + text + "\n");
    std::fflush(nullptr);
    std::_Exit(1);
}

}  // namespace brivok
