#pragma once

#include "shell/uci_handler.h"

namespace brivok {

/// UCI as modern interfaces expect it.
class ModernUciHandler final : public UciHandler {
public:
    using UciHandler::UciHandler;
};

}  // namespace brivok
