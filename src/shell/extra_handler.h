#pragma once

#include "shell/base/application.h"

namespace brivok {

/// The console that every run begins in: silent, and left by the first line of an interface.
class ExtraHandler final : public ProtocolHandler {
public:
    explicit ExtraHandler(Application& application);
    ~ExtraHandler() override;
    void ProcessCommand(std::string_view line) override;
    void Run() override;
};

}  // namespace brivok
