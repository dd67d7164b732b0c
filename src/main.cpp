#include <memory>

#include "platform/processor_level.h"
#include "search/searcher.h"
#include "shell/base/application.h"
#include "shell/extra_handler.h"
#include "shell/modern/modern_protocols.h"
#include "shell/protocols.h"

int main(int /*argc*/, char** argv) {
    using namespace brivok;
    continueAtBestLevel(argv);
    setUpEngine();
    theApplication = std::make_unique<Application>();
    theApplication->handler = std::make_unique<ExtraHandler>(*theApplication);
    theApplication->currentProtocol = Protocol::Extra;
    RunProtocols(*theApplication, handlersWanted());
}
