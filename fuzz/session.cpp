#include "session.h"

#include <memory>

#include "board/piece_values.h"
#include "egtb/tablebase_probe.h"
#include "fresh_engine.h"
#include "outside.h"
#include "shell/base/settings.h"
#include "shell/extra_handler.h"
#include "shell/protocols.h"

namespace brivok::fuzz {

void freshBoard() {
    if (theApplication == nullptr) {
        theApplication = std::make_unique<Application>();
        makeFresh();
    }
    settings = Settings{};
    RefreshPieceValues();
    theBoard.NewGame();
}

void runEngine(std::string lines) {
    theApplication = std::make_unique<Application>();
    makeFresh();
    // A log that grows nowhere. The folder of the tables counts as looked through already, which
    // would take longer than all else.
    settings.logInSingleFile = settings.createLog = true;
    tablebases.tbDirectories = settings.egtbDir = "nowhere";
    setInput(std::move(lines));
    try {
        theApplication->handler = std::make_unique<ExtraHandler>(*theApplication);
        RunProtocols(*theApplication);
    } catch (const ProcessEnded&) {
        theApplication->handler.reset();
    }
}

}  // namespace brivok::fuzz
