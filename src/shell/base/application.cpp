#include "shell/base/application.h"

#include <cstdio>
#include <cstdlib>

#include "platform/platform.h"
#include "shell/base/console.h"
#include "shell/base/report.h"

namespace brivok {

std::unique_ptr<Application> theApplication;

Application::Application() { platform().surviveClosedOutput(); }

void ExitProgram(int code) {
    if (theApplication != nullptr) {
        theApplication->handler.reset();
        theApplication.reset();
    }
    platform().endProcess(code);
    std::abort();  // never reached
}

void EndAtOnce(const std::string& text) {
    PrintUnlogged("*** " + text + "\n");
    std::fflush(nullptr);
    platform().endProcessAtOnce(1);
    std::abort();  // never reached
}

}  // namespace brivok
