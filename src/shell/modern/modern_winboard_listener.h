#pragma once

#include <string>

#include "shell/console_listener.h"
#include "shell/modern/modern_pv.h"

namespace brivok {

/// Thinking lines in the published form, "ply score time nodes moves": the time in centiseconds, a
/// mate in N moves as 100000 + N, being mated as -100000 - N, and moves in SAN alone. A pass that
/// left its window has "!" or "?" behind its move.
///
/// For the sake of the node count it renders what the plain listener renders, and when.
class ModernWinBoardListener final : public WinBoardListener {
public:
    using WinBoardListener::WinBoardListener;

    void onBookMove(Board& board, Move move) override;
    void onBudget(const TimeControl& clock) override;
    std::string rootMoveText(Board& board, Move move) override;
    void onIteration(const SearchProgress& progress, int score, SearchEvent event) override;
    void onLines(const SearchProgress& progress, std::span<const SearchLine> lines) override;

    /// Forgets the last search. Call before each search.
    void begin();

    /// The best move of the running search in SAN, as far as it is known.
    [[nodiscard]] const std::string& bestMove() const { return best; }

    bool showsNotes = true;  ///< print lines beginning with "##"

private:
    /// Unless it repeats the line before, or nothing is posted.
    void print(const SearchProgress& progress, int score, const std::string& line);

    ModernPv pv;
    std::string best;
    std::string last;  ///< depth, score and moves of the last line
};

}  // namespace brivok
