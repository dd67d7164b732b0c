#pragma once

#include <string>
#include <vector>

#include "shell/base/application.h"
#include "shell/uci_listener.h"

namespace brivok {

/// Serves an interface that speaks UCI and keeps the game itself: each "position" rebuilds the
/// board, each "go" searches it and answers with one "bestmove".
class UciHandler final : public ProtocolHandler {
public:
    /// Makes the tables and a new game, and answers "uci" with the options.
    explicit UciHandler(Application& application);
    ~UciHandler() override;
    void ProcessCommand(std::string_view line) override;
    void Run() override;

private:
    using Words = std::vector<std::string>;

    /// Joins the pieces of a "position" line that is longer than one piece of input. True while
    /// more of it is to come.
    [[nodiscard]] bool collectLongPosition(std::string_view& line);

    void execute(const Words& words);
    void executeInSearch(const Words& words);
    void newGame();
    void setPosition(const Words& words);
    void go(const Words& words);

    UciListener listener{app};
    std::string longPosition;  ///< a "position" line that is not complete yet
};

}  // namespace brivok
