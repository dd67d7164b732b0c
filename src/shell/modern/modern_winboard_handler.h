#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "board/board.h"
#include "search/time_control.h"
#include "shell/modern/modern_winboard_listener.h"
#include "shell/winboard_handler.h"

namespace brivok {

/// WinBoard as modern interfaces expect it. Each state has a table of further commands, tried
/// before the plain one.
///
/// A search never touches the game. So a command that does, and arrives during a search, is kept
/// and the search is stopped; once it has unwound, the kept lines are obeyed in order, as if idle.
/// A command that only concerns the moves to come does not stop a search for a move: it is kept
/// until that move is made.
///
/// Analysis is a state of this handler. While it lasts, each change of the position begins a new
/// search, and a search that ends by itself is followed by silence.
class ModernWinBoardHandler final : public WinBoardHandler {
public:
    explicit ModernWinBoardHandler(Application& application);

    /// What is understood in this state besides the plain commands. An analysis also understands
    /// the commands of the idle state.
    [[nodiscard]] static std::vector<std::string_view> furtherCommands(SearchMode mode);

private:
    using Self = ModernWinBoardHandler;
    using Further = brivok::Command<Self, Line>;
    [[nodiscard]] static CommandTable<Self, Line> furtherTable(SearchMode mode);

    // --- Which command does what, and when: modern_winboard_handler.cpp ---------------------

    void obey(const Line& line) override;
    void obeyRest(SearchMode mode, const Line& line);
    void refuse(const Line& line, const std::string& fault);
    void refuseMove(const std::string& text);

    // During a search. They stand in the tables themselves, hence static.
    static void ignore(Self& self, const Line& line);
    static void keep(Self& self, const Line& line);
    static void interrupt(Self& self, const Line& line);
    static void giveUp(Self& self, const Line& line);
    static void refuseTurn(Self& self, const Line& line);
    void takeMoveWhilePondering(const Line& line, const std::string& text);

    void announceFeatures(const Line& line);
    void noteAnswer(const Line& line);
    void setOption(const Line& line);
    void allowMemory(const Line& line);
    void findTables(const Line& line);
    void reportProgress();
    void giveHint(const std::string& move);
    void giveBookPage(Board& board);

    // --- Clocks and positions: modern_winboard_game.cpp -------------------------------------

    /// False if the line is refused.
    bool setClock(std::uint32_t& clock, const Line& line);
    void setOwnClock(const Line& line);
    void setLevel(const Line& line);
    void setTimePerMove(const Line& line);
    void setDepth(const Line& line);
    void beginControl(const TimeControl& clocks);

    void startNewGame();
    void startVariant(const Line& line);
    void setUpBoard(const Line& line);
    void takeBackMoves(const Line& line, std::uint32_t moves);
    void playMove(const std::string& text);
    void giveMoveTo(const Line& line, Side side);
    void play(Side side);
    void positionChanged();
    void reopenGame();

    // --- Flow of the game: modern_game_flow.cpp ---------------------------------------------

    [[nodiscard]] bool wantsSearch() const override;
    [[nodiscard]] SearchRequest nextSearch() override;
    [[nodiscard]] SearchListener& searchListener() override { return shown; }
    [[nodiscard]] bool useResult(SearchMode mode, Move move) override;
    [[nodiscard]] GameOutcome outcomeToClaim() override;
    [[nodiscard]] bool obeyKept();
    void startAnalysis();
    void endAnalysis();

    static const Further AtOnceCommands[];
    static const Further FurtherPonderCommands[];
    static const Further FurtherThinkCommands[];
    static const Further FurtherIdleCommands[];

    ModernWinBoardListener shown{app};
    std::set<std::string> rejected;     ///< features that the interface does not want
    TimeControl control = timeControl;  ///< the clocks at the start of a game
    int lastIteration = NoFixedDepth;   ///< of a search for a move
    /// The rules of the next game, once "variant" has set those of this one.
    std::optional<Variant> usualVariant;

    std::vector<Line> kept;      ///< to obey after the search
    bool givenUp = false;        ///< the move of the current search is not wanted
    bool analysing = false;      ///< between "analyze" and "exit"
    bool analysisRests = false;  ///< the analysis of this position has ended by itself
    /// While pondering: the position before the expected move.
    std::unique_ptr<Board> beforePondering = std::make_unique<Board>();
};

}  // namespace brivok
