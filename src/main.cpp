#include <memory>

#include "search/searcher.h"
#include "shell/base/application.h"
#include "shell/extra_handler.h"
#include "shell/modern/modern_protocols.h"
#include "shell/protocols.h"

int main() {
    using namespace brivok;
    setUpEngine();
    theApplication = std::make_unique<Application>();
    theApplication->handler = std::make_unique<ExtraHandler>(*theApplication);
    theApplication->currentProtocol = Protocol::Extra;
    RunProtocols(*theApplication, handlersWanted());
}
