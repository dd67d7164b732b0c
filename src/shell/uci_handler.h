#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "shell/base/application.h"
#include "shell/base/protocol_handler.h"
#include "shell/command_table.h"
#include "shell/uci_listener.h"

namespace brivok {

/// Serves a UCI interface, which keeps the game itself: each "position" rebuilds the board, each
/// "go" searches it and answers with one "bestmove".
class UciHandler : public ProtocolHandler {
public:
    /// Allocates the tables, starts a new game and answers "uci" with the options.
    explicit UciHandler(Application& application);
    ~UciHandler() override;
    void ProcessCommand(std::string_view line) override;
    void Run() override;

    /// The commands understood while idle or while searching.
    [[nodiscard]] static std::vector<std::string_view> commands(bool searching);
    [[nodiscard]] static std::vector<std::string_view> goWords();

protected:
    using Words = std::vector<std::string>;

    /// Everything that the public constructor does except the answer to "uci".
    struct Unannounced {};
    UciHandler(Application& application, Unannounced tag);

    /// Names the engine and its author.
    void introduce();

    [[nodiscard]] static CommandTable<UciHandler, Words> table(bool searching);

    /// Joins the pieces of a "position" line longer than one piece of input. True while more of it
    /// is still to come.
    [[nodiscard]] bool collectLongPosition(std::string_view& line);

    void confirmReady();
    void stop();
    void ponderHit();
    void newGame();
    void setPosition(const Words& words);
    void go(const Words& words);

    UciListener listener{app};
    std::string longPosition;  ///< incomplete "position" line
};

}  // namespace brivok
