#include "shell/modern/modern_winboard_listener.h"

#include "movegen/san.h"
#include "search/score.h"
#include "search/searcher.h"
#include "shell/base/console.h"
#include "shell/principal_variation.h"

namespace brivok {

namespace {

/// What moveToSan() says of an illegal move.
constexpr std::string_view NoSan = "xxxx";

constexpr int MateBase = 100'000;

/// A score as the protocol has it: mates beyond MateBase, counted in moves.
int publishedScore(int score) {
    if (score > MateBound) return MateBase + movesToMate(score);
    if (score < -MateBound) return -MateBase - (MateScore + score) / 2;
    return score;
}

std::string firstWord(const std::string& line) { return line.substr(0, line.find(' ')); }

}  // namespace

void ModernWinBoardListener::begin() {
    best.clear();
    last.clear();
}

void ModernWinBoardListener::onBookMove(Board& board, Move move) {
    const std::string text = moveToSan(board, move);
    if (theSearcher.postThinking) Print(app, "0 1 0 0 %s\n", text.c_str());
}

void ModernWinBoardListener::onBudget(const TimeControl& clock) {
    if (showsNotes) WinBoardListener::onBudget(clock);
}

/// Empty for a pseudo-legal move that turns out to be illegal, which a report of the progress may
/// meet.
std::string ModernWinBoardListener::rootMoveText(Board& board, Move move) {
    std::string text = WinBoardListener::rootMoveText(board, move);
    return text == NoSan ? std::string() : text;
}

void ModernWinBoardListener::onIteration(const SearchProgress& progress, int score,
                                         SearchEvent event) {
    const bool shown = theSearcher.postThinking;
    if (event == SearchEvent::FailedHigh || event == SearchEvent::FailedLow) {
        if (!shown) return;
        const std::string move = moveToSan(progress.board, progress.board.pvTable[1][1]);
        print(progress, score, move + (event == SearchEvent::FailedHigh ? "!" : "?"));
        return;
    }
    if (shown) (void)renderPv(progress, PvStyle::San);
    const std::string line = pv.render(progress, ModernPv::Notation::San);
    best = firstWord(line);
    print(progress, score, line);
}

void ModernWinBoardListener::onLines(const SearchProgress& progress,
                                     std::span<const SearchLine> lines) {
    for (const SearchLine& line : lines) {
        const std::string text = pv.render(progress, line.moves, ModernPv::Notation::San);
        if (&line == lines.data()) best = firstWord(text);
        print(progress, line.score, text);
    }
}

void ModernWinBoardListener::print(const SearchProgress& progress, int score,
                                   const std::string& line) {
    if (!theSearcher.postThinking) return;
    const int shown = publishedScore(score);
    std::string told =
        std::to_string(progress.iteration) + " " + std::to_string(shown) + " " + line;
    if (told == last) return;
    last = std::move(told);
    Print(app, "%d %d %u %s %s\n", progress.iteration, shown, progress.elapsed,
          std::to_string(progress.nodes).c_str(), line.c_str());
}

}  // namespace brivok
