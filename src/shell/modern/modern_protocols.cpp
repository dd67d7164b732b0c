#include "shell/modern/modern_protocols.h"

#include "board/piece_values.h"
#include "search/searcher.h"
#include "shell/base/settings.h"
#include "shell/configuration.h"
#include "shell/modern/modern_options.h"
#include "shell/modern/modern_uci_handler.h"
#include "shell/modern/modern_winboard_handler.h"

namespace brivok {

namespace {

/// Nothing that one protocol has set reaches the next.
void resetSettings() {
    settings = Settings{};
    modernSettings = ModernSettings{};
    RefreshPieceValues();
    theSearcher.ponderEnabled = theSearcher.postThinking = true;
}

}  // namespace

HandlerMaker handlersWanted() {
    return wantsModernInterface() ? makeModernHandler : makePlainHandler;
}

std::unique_ptr<ProtocolHandler> makeModernHandler(Application& app, Protocol protocol) {
    switch (protocol) {
        case Protocol::Uci:
            resetSettings();
            ReadConfiguration();
            app.logger.OpenLog();
            return std::make_unique<ModernUciHandler>(app);
        case Protocol::WinBoard:
            resetSettings();
            return std::make_unique<ModernWinBoardHandler>(app);
        default: return makePlainHandler(app, protocol);
    }
}

}  // namespace brivok
