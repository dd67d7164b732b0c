#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "board/move.h"
#include "shell/base/application.h"
#include "shell/base/protocol_handler.h"
#include "shell/command_table.h"
#include "shell/console_listener.h"

namespace brivok {

/// Plays games under the WinBoard protocol, version 2: the handler keeps the game, thinks when it
/// is the engine's turn, ponders, analyses, resigns and claims results.
///
/// ProcessCommand() is reached from Run() when the engine idles, and from deep inside a search when
/// that polls the input; the mode of the search decides which commands are understood.
class WinBoardHandler final : public ProtocolHandler {
public:
    /// Reads the settings, opens the log, makes the tables and a new game.
    explicit WinBoardHandler(Application& application);
    ~WinBoardHandler() override;
    void ProcessCommand(std::string_view text) override;

    /// The flow of the game: after each line and each search decides whether to think, ponder,
    /// analyse or read. Returns only for another protocol.
    void Run() override;

    /// The commands that are understood in this mode. Idle or pondering, a bare move is one too.
    [[nodiscard]] static std::vector<std::string_view> commands(SearchMode mode);

private:
    /// A line that is being handled: its words, and the text as it came.
    struct Line {
        std::vector<std::string> words;
        std::string text;

        /// The word at the index; nothing if it is not there or empty.
        [[nodiscard]] const std::string* word(std::size_t index) const;

        /// The text of the move in a line that brings one.
        [[nodiscard]] const std::string& moveText() const;
    };

    using Command = brivok::Command<WinBoardHandler, Line>;
    [[nodiscard]] static CommandTable<WinBoardHandler, Line> table(SearchMode mode);

    // --- What the commands do: winboard_handler.cpp -----------------------------------------

    void quit();
    void ping(const Line& line);
    void force();
    void forceAndStop();
    void protover(const Line& line);
    void chooseVariant(const Line& line);
    void level(const Line& line);
    void fixedTime(const Line& line);
    void fixedDepth(const Line& line);
    void setBoard(const Line& line);
    void analyze();
    void newGame();
    void takeBack(int moves);
    void countMoves(const Line& line);
    void unknown(const Line& line);
    void playUserMove(const Line& line);
    void takePonderedMove(const Line& line);

    // --- The flow of the game: game_flow.cpp ------------------------------------------------

    [[nodiscard]] bool wantsSearch() const;
    [[nodiscard]] bool runSearch();
    [[nodiscard]] SearchRequest nextSearch();
    void playEngineMove(Move move);
    void testGameEnd();
    void endPondering();

    static const Command AnalysisCommands[];
    static const Command PonderCommands[];
    static const Command ThinkCommands[];
    static const Command IdleCommands[];

    WinBoardListener listener{app};
    int protocolVersion = 1;  ///< of the last "protover"; only stored
    Side engineSide = Black;
    int resignCounter = 0;   ///< moves made with a hopeless score since "new"
    bool forceMode = false;  ///< the engine makes no move of its own
    bool gameOver = false;   ///< the engine starts no search but an analysis
    /// Text of a move that came during pondering, until that search has ended.
    std::string strMovDuranteBusqueda;
};

}  // namespace brivok
