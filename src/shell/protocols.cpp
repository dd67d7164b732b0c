#include "shell/protocols.h"

#include "egtb/registration.h"
#include "egtb/tablebase_probe.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/transposition_table.h"
#include "platform/platform.h"
#include "shell/base/console.h"
#include "shell/base/report.h"
#include "shell/base/settings.h"
#include "shell/extra_handler.h"
#include "shell/uci_handler.h"
#include "shell/winboard_handler.h"

namespace brivok {

std::unique_ptr<ProtocolHandler> makePlainHandler(Application& app, Protocol protocol) {
    switch (protocol) {
        case Protocol::Extra: return std::make_unique<ExtraHandler>(app);
        case Protocol::Uci: return std::make_unique<UciHandler>(app);
        case Protocol::WinBoard: return std::make_unique<WinBoardHandler>(app);
        case Protocol::None: break;
    }
    return nullptr;
}

void RunProtocols(Application& app, HandlerMaker makeHandler) {
    for (;;) {
        app.handler->Run();
        if (app.requestedProtocol == Protocol::None) continue;
        app.handler.reset();
        app.handler = makeHandler(app, app.requestedProtocol);
        if (app.handler == nullptr) {
            Print(app, "Error: unknown protocol\n");
            ExitProgram(1);
        }
        app.currentProtocol = app.requestedProtocol;
        tablebases.noteCacheSize = app.currentProtocol != Protocol::Uci;
        app.requestedProtocol = Protocol::None;
    }
}

void allocateTables() {
    transpositionTable.resize();
    evalHashTable.Allocate();
    pawnHashTable.Allocate();
    InitTablebases(settings.egtbDir, settings.EGTBCacheBytes);
}

void logConnection(Application& app) {
    LogOnly(app, platform().inputIsTerminal() ? "Console Mode\n" : "Conected with pipe\n");
}

}  // namespace brivok
