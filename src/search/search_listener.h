#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "board/board.h"
#include "board/coordinate.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "search/search_request.h"
#include "search/time_control.h"

namespace brivok {

/// What a line of thinking is about.
enum class SearchEvent { NewBest, Finished, FailedHigh, FailedLow };

/// How far a search has come. The references are those of the search in progress.
struct SearchProgress {
    /// The position searched, with its principal variation in row 1 of `pvTable`.
    Board& board;
    const TranspositionTable& table;  ///< of the search
    const SearchStats& stats;         ///< of the search
    SearchMode mode;                  ///< of the search
    int iteration;                    ///< in progress, from 1
    int selDepth;                     ///< deepest ply that quiescence has reached in this pass
    int iterationScore;               ///< of the last finished iteration, centipawns
    std::uint32_t elapsed;            ///< centiseconds since the start
    std::uint32_t tableHits;          ///< values from endgame tables since the program started
    float branchingFactor;  ///< nodes of the last iteration by those of the one before; 0 unknown
    int rootMovesLeft;      ///< legal moves that this pass has not begun
    int rootMovesTotal;     ///< legal moves at the root
    std::string_view currentMoveText;  ///< of the root move in hand
};

/// Who a search tells what it finds, and asks for input. One listener for each way of speaking
/// stands beside the handlers. As it is, this one says nothing and hears nothing.
///
/// A listener may play moves on the board and take them back, to name a move or to render a line.
/// That leaves these moves in undo records that a later null move finds and a recapture test reads:
/// *when* a listener does so is part of the node count. So each call stands at a fixed place of the
/// search, is made whether or not anybody shows the result, and a listener that renders decides by
/// settings alone (posting on or off), never by the clock.
class SearchListener {
public:
    SearchListener() = default;
    SearchListener(const SearchListener&) = delete;
    SearchListener& operator=(const SearchListener&) = delete;
    virtual ~SearchListener() = default;

    /// The book has the move to play; there will be no search.
    virtual void onBookMove(Board& /*board*/, Move /*move*/) {}

    /// A ponder search is about to make the move that it expects.
    virtual void onPonderMove(Board& /*board*/, Move /*move*/) {}

    /// The budget of the move is known: `allocated` of the clock.
    virtual void onBudget(const TimeControl& /*clock*/) {}

    /// The text of a root move, before it is made. Asked for each move of each pass.
    virtual std::string rootMoveText(Board& /*board*/, Move move) { return moveToCoordinate(move); }

    /// A root move of a pass has been made and is about to be searched. From iteration
    /// `FirstToldIteration` on.
    virtual void onRootMove(const SearchProgress& /*progress*/, bool /*firstOfPass*/) {}

    /// A new best move, or an iteration that finished or left its window. `score` in centipawns
    /// from the side to move. From iteration `FirstToldIteration` on.
    virtual void onIteration(const SearchProgress& /*progress*/, int /*score*/,
                             SearchEvent /*event*/) {}

    /// An analysis has gone another 2^20 nodes. From iteration `FirstToldIteration` on.
    virtual void onManyNodes(const SearchProgress& /*progress*/) {}

    /// The counters of a search that has ended, or the sum of several.
    virtual void onStatistics(const SearchStats& /*stats*/) {}

    /// A single line for the log, with its newline.
    virtual void onNote(std::string_view /*line*/) {}

    /// Looks at the input and handles at most one line, on the stack of the search. False when the
    /// input has ended.
    virtual bool pollInput() { return true; }
};

/// The iterations before this one are over too soon to be told of.
inline constexpr int FirstToldIteration = 3;

}  // namespace brivok
