#include "program.h"

#include <memory>

#include "fresh_engine.h"
#include "shell/base/application.h"
#include "shell/extra_handler.h"
#include "shell/modern/modern_protocols.h"
#include "shell/protocols.h"

namespace brivok {

namespace {

void takeDown() {
    if (theApplication == nullptr) return;
    theApplication->logger.CloseLog();
    theApplication.reset();
}

}  // namespace

Program::Program(FakePlatform& platform) : outside(platform), before(replacePlatform(platform)) {
    takeDown();
    makeFresh();
    theApplication = std::make_unique<Application>();
}

Program::~Program() {
    takeDown();
    replacePlatform(before);
}

void Program::run() {
    if (exitCode) return;
    Application& app = *theApplication;
    try {
        if (app.handler == nullptr) app.handler = std::make_unique<ExtraHandler>(app);
        RunProtocols(app, handlersWanted());
    } catch (const ScriptDone&) {
    } catch (const ProcessEnded& end) {
        exitCode = end.code;
        takeDown();
    }
}

}  // namespace brivok
