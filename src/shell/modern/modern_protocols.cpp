#include "shell/modern/modern_protocols.h"

#include "shell/configuration.h"
#include "shell/modern/modern_uci_handler.h"
#include "shell/modern/modern_winboard_handler.h"

namespace brivok {

HandlerMaker handlersWanted() {
    return wantsModernInterface() ? makeModernHandler : makePlainHandler;
}

std::unique_ptr<ProtocolHandler> makeModernHandler(Application& app, Protocol protocol) {
    switch (protocol) {
        case Protocol::Uci:
            ReadConfiguration();
            app.logger.OpenLog();
            return std::make_unique<ModernUciHandler>(app);
        case Protocol::WinBoard: return std::make_unique<ModernWinBoardHandler>(app);
        default: return makePlainHandler(app, protocol);
    }
}

}  // namespace brivok
