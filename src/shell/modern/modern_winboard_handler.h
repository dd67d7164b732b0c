#pragma once

#include "shell/winboard_handler.h"

namespace brivok {

/// WinBoard as modern interfaces expect it.
class ModernWinBoardHandler final : public WinBoardHandler {
public:
    using WinBoardHandler::WinBoardHandler;
};

}  // namespace brivok
