#include <memory>

#include "board/piece_values.h"
#include "board/static_tables.h"
#include "shell/base/application.h"
#include "shell/extra_handler.h"
#include "shell/protocols.h"

int main() {
    using namespace brivok;
    buildStaticTables();
    RefreshPieceValues();
    theApplication = std::make_unique<Application>();
    theApplication->handler = std::make_unique<ExtraHandler>(*theApplication);
    theApplication->currentProtocol = Protocol::Extra;
    RunProtocols(*theApplication);
}
