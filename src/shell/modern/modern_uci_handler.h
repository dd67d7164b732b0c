#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "shell/modern/modern_uci_listener.h"
#include "shell/uci_handler.h"

namespace brivok {

/// UCI as modern interfaces expect it. What it does not understand is told in an "info string", and
/// has no effect. Lines of unknown commands are ignored.
class ModernUciHandler final : public UciHandler {
public:
    explicit ModernUciHandler(Application& application);
    ~ModernUciHandler() override;
    void ProcessCommand(std::string_view line) override;

    /// The commands understood while idle or while searching, those of the plain handler included.
    [[nodiscard]] static std::vector<std::string_view> commands(bool searching);

private:
    struct Input {
        std::string line;  ///< as it came, with its newline
        Words words;       ///< separated by blanks of any kind; none is empty
    };
    /// The commands that the plain handler does not have, or that differ from its own.
    [[nodiscard]] static CommandTable<ModernUciHandler, Input> ownTable(bool searching);

    void introduceAll();
    void complain(const std::string& text);
    /// A command that an interface must not send while a search runs.
    void refuse(const Input& input);

    void setOption(const Input& input);

    void setPosition(const Words& words);
    /// Sets up the position that the words before "moves" describe. False if they do not.
    [[nodiscard]] bool setUp(const Words& description);

    void go(const Words& words);
    /// Completes a request by what the options say.
    static void applyOptions(SearchRequest& request);
    /// Says so if a search for a mate in so many moves has ended without it; 0 for no such search.
    void tellMissingMate(int moves);
    /// Handles lines until the interface permits the answer to an analysis or to pondering.
    void awaitPermission();
    void answer(Move best);
    void ponderHit();

    ModernUciListener reporter{app};
};

}  // namespace brivok
