#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "board/move.h"
#include "search/game_end.h"
#include "search/search_request.h"
#include "shell/base/application.h"
#include "shell/base/protocol_handler.h"
#include "shell/command_table.h"
#include "shell/console_listener.h"

namespace brivok {

/// Plays games under the WinBoard protocol, version 2: keeps the game, thinks on the engine's turn,
/// ponders, analyses, resigns and claims results.
///
/// ProcessCommand() is called from Run() when the engine is idle, and from deep inside a search
/// that polls the input. The search mode decides which commands are understood.
class WinBoardHandler : public ProtocolHandler {
public:
    /// Reads the settings, opens the log, allocates the tables and starts a new game.
    explicit WinBoardHandler(Application& application);
    ~WinBoardHandler() override;
    void ProcessCommand(std::string_view text) override;

    /// Runs the game: after each line and each search, decides whether to think, ponder, analyse or
    /// read. Returns only to switch to another protocol.
    void Run() override;

    /// The commands understood in this mode. When idle or pondering, a bare move is understood too.
    [[nodiscard]] static std::vector<std::string_view> commands(SearchMode mode);

protected:
    /// The line being handled: its words and its original text.
    struct Line {
        std::vector<std::string> words;
        std::string text;

        /// The word at the index; nullptr if it is missing or empty.
        [[nodiscard]] const std::string* word(std::size_t index) const;

        /// The text behind the first `skipped` words, without blanks at either end.
        [[nodiscard]] std::string rest(int skipped) const;

        /// The move text in a line that contains a move.
        [[nodiscard]] const std::string& moveText() const;
    };

    using Command = brivok::Command<WinBoardHandler, Line>;
    [[nodiscard]] static CommandTable<WinBoardHandler, Line> table(SearchMode mode);

    // --- Commands: winboard_handler.cpp -----------------------------------------------------

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
    void takePonderHit();

    /// Carries out a line with at least one word.
    virtual void obey(const Line& line);

    // --- Flow of the game: game_flow.cpp ----------------------------------------------------

    /// Whether a search is to be started before the next line is read.
    [[nodiscard]] virtual bool wantsSearch() const;
    [[nodiscard]] bool runSearch();
    [[nodiscard]] virtual SearchRequest nextSearch();
    [[nodiscard]] virtual SearchListener& searchListener() { return listener; }
    /// Acts on what a search in this mode has found. False if that is neither a move nor the end of
    /// the game.
    [[nodiscard]] virtual bool useResult(SearchMode mode, Move move);
    void playEngineMove(Move move);
    void testGameEnd();
    /// What the engine claims in the position on the board: after its move, or when it has none.
    [[nodiscard]] virtual GameOutcome outcomeToClaim();
    void endPondering();

    static const Command AnalysisCommands[];
    static const Command PonderCommands[];
    static const Command ThinkCommands[];
    static const Command IdleCommands[];

    WinBoardListener listener{app};
    std::uint32_t protocolVersion = 1;  ///< from the last "protover"; stored but unused
    Side engineSide = Black;
    int resignCounter = 0;   ///< moves with a hopeless score since "new"
    bool forceMode = false;  ///< the engine makes no moves
    bool gameOver = false;   ///< the engine starts no search except analysis
    /// Move text that arrived while pondering, kept until that search has ended.
    std::string strMovDuranteBusqueda;
};

}  // namespace brivok
