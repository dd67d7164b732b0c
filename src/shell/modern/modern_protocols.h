#pragma once

#include "shell/protocols.h"

namespace brivok {

/// The handlers that "brivok.ini" asks for: plain ones, or, with `ModernInterface: true`, modern
/// ones.
[[nodiscard]] HandlerMaker handlersWanted();

/// The handlers that speak as modern interfaces expect. Each of them reads "brivok.ini" when it
/// starts. Console mode is the plain one.
[[nodiscard]] std::unique_ptr<ProtocolHandler> makeModernHandler(Application& app,
                                                                 Protocol protocol);

}  // namespace brivok
