#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "board/board.h"
#include "board/coordinate.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "search/search_request.h"
#include "search/time_control.h"

namespace brivok {

/// The reason for a line of thinking.
enum class SearchEvent { NewBest, Finished, FailedHigh, FailedLow };

/// Progress of a search. The references are to that search's own data.
struct SearchProgress {
    /// The position searched; row 1 of `pvTable` holds its principal variation.
    Board& board;
    const TranspositionTable& table;
    const SearchStats& stats;
    std::uint64_t nodes;  ///< those of `stats`, which start again at 2^32
    SearchMode mode;
    int iteration;                     ///< current iteration, from 1
    int selDepth;                      ///< deepest ply reached by quiescence in this pass
    int iterationScore;                ///< of the last completed iteration, centipawns
    std::uint32_t elapsed;             ///< centiseconds since the start
    std::uint32_t tableHits;           ///< endgame table hits since the program started
    float branchingFactor;             ///< ratio of the last two iterations' nodes; 0 if unknown
    int rootMovesLeft;                 ///< legal moves not yet begun in this pass
    int rootMovesTotal;                ///< legal moves at the root
    std::string_view currentMoveText;  ///< of the root move being searched
};

/// One of several best lines of a search.
struct SearchLine {
    int score;                    ///< centipawns from the side to move
    int selDepth;                 ///< deepest ply reached by quiescence
    std::span<const Move> moves;  ///< principal variation, from the move at the root
};

/// Earlier iterations are too short to report.
inline constexpr int FirstToldIteration = 3;

/// Receives what a search finds, and is asked for input. The listeners for each protocol are beside
/// the handlers. This base class is silent.
///
/// A listener may make and unmake moves on the board, to name a move or to render a line. That
/// changes undo records which a later null move or recapture test reads, so *when* a listener does
/// so affects the node count. Hence each call has a fixed place in the search and is made whether
/// or not the result is shown, and a listener decides whether to render by settings alone (posting
/// on or off), never by the clock.
class SearchListener {
public:
    /// Iterations before `firstTold` are not reported.
    explicit SearchListener(int firstTold = FirstToldIteration) : firstToldIteration(firstTold) {}
    SearchListener(const SearchListener&) = delete;
    SearchListener& operator=(const SearchListener&) = delete;
    virtual ~SearchListener() = default;

    /// The move to play comes from the book; there is no search.
    virtual void onBookMove(Board& /*board*/, Move /*move*/) {}

    /// A ponder search is about to make the expected move.
    virtual void onPonderMove(Board& /*board*/, Move /*move*/) {}

    /// The budget of the move is set: `allocated` in the clock.
    virtual void onBudget(const TimeControl& /*clock*/) {}

    /// The text of a root move, before it is made. Called for each move of each pass.
    virtual std::string rootMoveText(Board& /*board*/, Move move) { return moveToCoordinate(move); }

    /// A root move has been made and is about to be searched. Called from iteration
    /// `firstToldIteration` on.
    virtual void onRootMove(const SearchProgress& /*progress*/, bool /*firstOfPass*/) {}

    /// A new best move, or an iteration that finished or left its window. `score` is in centipawns
    /// from the side to move. Called from iteration `firstToldIteration` on.
    virtual void onIteration(const SearchProgress& /*progress*/, int /*score*/,
                             SearchEvent /*event*/) {}

    /// A search for several lines has finished an iteration, or ends within one that changed the
    /// best move or its score. The lines are in descending order of their scores, as many as there
    /// are moves or were wanted. Lines that the last iteration did not reach are those of the one
    /// before, with scores no better than the new ones. Called from iteration `firstToldIteration`
    /// on.
    virtual void onLines(const SearchProgress& /*progress*/,
                         std::span<const SearchLine> /*lines*/) {}

    /// An analysis has searched another 2^20 nodes. Called from iteration `firstToldIteration` on.
    virtual void onManyNodes(const SearchProgress& /*progress*/) {}

    /// The counters of a finished search, or the sum of several.
    virtual void onStatistics(const SearchStats& /*stats*/) {}

    /// One line for the log, with its newline.
    virtual void onNote(std::string_view /*line*/) {}

    /// Polls the input and handles at most one line, on the search's stack. False if the input has
    /// ended.
    virtual bool pollInput() { return true; }

    const int firstToldIteration;  ///< first iteration that is reported
};

}  // namespace brivok
