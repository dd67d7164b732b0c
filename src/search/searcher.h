#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "board/board.h"
#include "egtb/tablebase_probe.h"
#include "eval/evaluate.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "movegen/generate.h"
#include "search/game_end.h"
#include "search/score.h"
#include "search/search_listener.h"
#include "search/search_request.h"
#include "search/time_control.h"
#include "shell/base/settings.h"

namespace brivok {

/// Depth is measured in sixteenths of a ply. A node with less than a ply left is quiescence.
inline constexpr int OnePly = 16;

/// The iterations before this one always finish. From here on the clock may end the deepening, and
/// a ponder move is trusted.
inline constexpr int FirstTimedIteration = 3;

/// No fixed depth is larger: the depth of such an iteration, in units, still fits an int.
inline constexpr std::int64_t DeepestIteration = 100'000'000;

/// Nodes between two looks at the input and the clock. The first look comes at the first node.
inline constexpr std::uint32_t PollInterval = 20000;
/// The same while it ponders.
inline constexpr std::uint32_t PonderPollInterval = 5000;

/// What a search works with: nothing else is read or written but the piece values, the endgame
/// tables and the book, which belong to the process. Two searchers with parts of their own do not
/// disturb each other.
struct SearchParts {
    Board& board;                            ///< holds the position; as before when a search ends
    const Settings& settings;                ///< read at each use
    SearchStats& stats;                      ///< zeroed at the start of each search
    TimeControl& clock;                      ///< of the game; commands may set it during a search
    TranspositionTable& transpositionTable;  ///< keeps what it has learned between searches
    Evaluation& evaluation;                  ///< with the small tables
    const TablebaseState& tablebases;        ///< which endgame tables the process has
};

/// The search: iterative deepening with aspiration windows over a principal-variation search
/// (Marsland and Campbell, 1982) with null move, and a quiescence search of captures. One thread;
/// the outside is reached by polling only.
class Searcher final : public NewGameListener {
public:
    /// The parts outlive the searcher.
    explicit Searcher(const SearchParts& parts);

    /// Searches the position on the board as the request asks and returns the move to play, or 0
    /// when there is none; `gameOutcome` then tells why. Returns when the search is over; lines
    /// that arrive meanwhile are handled on its stack, by the listener. `searchMode` is left as it
    /// is then, for a ponder hit may have changed it: the caller sets it to Idle.
    Move think(const SearchRequest& request, SearchListener& toTell);

    /// The limits of the last search, which outlive it: a fixed depth holds until it is lifted.
    [[nodiscard]] SearchRequest standingRequest() const {
        return {.maxIteration = maxIteration, .nodeLimit = nodeLimit};
    }

    /// A game begins: the clocks get their defaults, and its result is open.
    void onNewGame() override;

    // --- State that a caller may read and set -------------------------------------------------

    SearchMode searchMode = SearchMode::Idle;  ///< what the caller wants, Idle when over
    int maxIteration = NoFixedDepth;  ///< last iteration; any other value turns the clock off
    std::uint32_t nodeLimit = 0;      ///< stop after this many nodes; 0 for none
    std::uint32_t searchStartTime;    ///< centiseconds
    bool ponderEnabled = true;        ///< search in the opponent's time
    bool postThinking = true;         ///< print thinking lines outside UCI
    bool stopSearch = false;          ///< the running search is to unwind

    // What a search leaves, until the next one. Only `ponderMove` and `gameOutcome` reach into it.
    GameOutcome gameOutcome = GameOutcome::None;  ///< why there is no more to play
    Move ponderMove = NoMove;                     ///< reply expected from the opponent
    std::uint64_t hashPonder = 0;                 ///< key of the position before the ponder move
    bool bookMove = false;                        ///< the move returned came from the opening book
    int iterationScore = 0;                       ///< score of the last finished iteration
    int iteration = 0;                            ///< the iteration in progress, from 1
    int selDepth = 0;  ///< deepest ply that quiescence has reached in this pass
    std::array<std::uint32_t, NoFixedDepth + 1> nodesAtIteration{};  ///< by iteration number

    Board* board;  ///< the one that is searched; not owned

    /// A ponder search has become the search of a move: its budget is worked out by the clocks as
    /// they stand now. Its time goes on from its start.
    void takePonderHit();

    /// After the engine's move: its score is hopeless, and the opponent neither in check nor short
    /// of time.
    [[nodiscard]] bool ShouldCountResign() const;

    /// How far the search in progress has come.
    [[nodiscard]] SearchProgress progress() const;

private:
    /// What every node keeps on its own stack frame.
    struct Frame {
        MoveList moves;
        int orderScores[MaxMoves];
        int seeValues[MaxMoves];
        int count = 0;
    };

    // --- think.cpp: from the request to the move --------------------------------------------

    void prepare(const SearchRequest& request);
    Move askBook();
    void makePonderMove();
    /// Fills the root list and counts its legal moves. Returns the index of the last legal one.
    int listRootMoves();
    void beginSearch();
    void allocateBudget();
    void setBudget();
    /// Deepens until the search is over. Returns the best move of the last iteration that counts.
    Move deepen();
    /// One iteration: a pass with a window around the last score, and those of the re-searches.
    /// False when it has ended the game.
    bool searchIteration(int& score, Move& bestMove);
    int searchAgain(SearchEvent event, int score, int alpha, int beta, int depth);
    void noteFinishedIteration();
    [[nodiscard]] bool isBudgetNearlySpent() const;
    void findPonderMove(Move bestMove);
    void note(const std::string& line) { listener->onNote(line); }
    void tellIteration(int score, SearchEvent event);
    void tellManyNodes();

    // --- root_search.cpp --------------------------------------------------------------------

    int searchRoot(int alpha, int beta, int depth);
    int searchRootMove(Move m, int alpha, int beta, int newDepth, int movesDone, int& best);
    [[nodiscard]] bool isRootDrawn();

    // --- alpha_beta.cpp ---------------------------------------------------------------------

    /// What the moves of a node share.
    struct Node {
        int beta;
        int depth;
        int searchPly;
        bool inCheck;
        bool mateThreat;         ///< a null move was answered by mate
        bool recaptureExtended;  ///< the parent's move got the recapture extension
        bool onlyReply = false;  ///< there is one move, out of a check
        Move prev = NoMove;      ///< the move that led here
    };

    int search(int alpha, int beta, int depth, int searchPly, bool allowNull,
               bool recaptureExtended);
    [[nodiscard]] bool isRepetitionDraw(int searchPly) const;
    [[nodiscard]] bool probeTablebases(int searchPly, int& score) const;
    [[nodiscard]] bool mayProbeTablebases(int searchPly) const;
    [[nodiscard]] int tableDrawScore() const;
    TranspositionTable::Probe probeTable(int searchPly, int beta, int depth,
                                         TranspositionTable::Found& found, bool& allowNull);
    void storeInTable(int searchPly, int score, Bound bound, Move move, bool mateThreat, int depth);
    [[nodiscard]] bool mayTryNullMove(const Node& node, bool allowNull) const;
    [[nodiscard]] bool nullMoveCuts(Node& node, int& score);
    Move deepenInternally(int alpha, const Node& node);
    int searchMove(Move m, int alpha, const Node& node, int movesDone);
    /// The score of the position after a move: of the tree, or of quiescence below a ply.
    int searchChild(int alpha, int beta, int newDepth, int childPly, bool recaptured) {
        return newDepth >= OnePly ? -search(-beta, -alpha, newDepth, childPly, true, recaptured)
                                  : -quiesce(-beta, -alpha, childPly, true);
    }

    /// The extension for a check and for a push to the seventh rank of the move just made, in
    /// units. The flag of the next ply's check is set on the way.
    int checkExtensionOf(int searchPly);
    int pawnPushExtensionOf(Move m);
    /// All extensions of a move in the tree, limited. `recaptured` tells whether the recapture
    /// extension is part of it.
    int extensionOf(Move m, const Node& node, bool& recaptured);
    [[nodiscard]] int limitExtension(int extension, int searchPly) const;

    /// Futility and razoring of a late move, by the material alone.
    enum class Pruning { None, ToQuiescence, OnePlyLess };
    Pruning pruningOf(int alpha, const Node& node, int extension);

    // --- quiescence.cpp ---------------------------------------------------------------------

    int quiesce(int alpha, int beta, int searchPly, bool checkRepetition);

    // --- move_ordering.cpp ------------------------------------------------------------------

    void scoreMoves(Frame& frame, Move hashMove, int searchPly);
    /// The move with the highest order score of those not yet picked, the first among equals; 0
    /// when there is none left. `index` is its place in the list.
    static Move pickMove(Frame& frame, int& index) {
        constexpr int Picked = -1'000'000;  // written over the score of a picked move
        int best = Picked;
        int bestAt = -1;
        for (int i = 0; i < frame.count; ++i) {
            if (frame.orderScores[i] > best) {
                best = frame.orderScores[i];
                bestAt = i;
            }
        }
        if (bestAt < 0) return NoMove;
        frame.orderScores[bestAt] = Picked;
        index = bestAt;
        return frame.moves[bestAt];
    }

    // --- search_clock.cpp -------------------------------------------------------------------

    /// True when the search must stop now. In the common case one comparison, which bears the
    /// counters' wrap-around in a very long analysis.
    [[nodiscard]] bool pollSearch() {
        return static_cast<std::int32_t>(stats.nodes - stats.nextPoll) > 0 && pollInputAndClock();
    }
    [[nodiscard]] bool pollInputAndClock();
    [[nodiscard]] bool mayGoOn(std::uint32_t used);
    [[nodiscard]] bool endsByItself() const;
    [[nodiscard]] bool isTimed() const;
    [[nodiscard]] std::uint32_t elapsed() const;

    // --- What it works with -----------------------------------------------------------------

    const Settings& settings;
    SearchStats& stats;
    TimeControl& clock;
    TranspositionTable& transpositionTable;
    Evaluation& evaluation;
    const TablebaseState& tablebases;
    SearchListener* listener = nullptr;  ///< of the search in progress
    bool keepsGame = false;              ///< see SearchRequest

    // --- State of the search in progress ----------------------------------------------------

    Frame root{};  ///< pseudo-legal root list; its order never changes, only the order scores do
    std::array<std::uint32_t, MaxMoves> rootMoveNodes{};  ///< by position in the root list
    int legalRootMoveCount = 0;
    int rootMovesTotal = 0;
    int rootMovesLeft = 0;
    Move bestRootMove = NoMove;
    std::string currentMoveText;
    float branchingFactor = 0;   ///< nodes of the last iteration by those of the one before
    bool mayExtendTime = false;  ///< the one extension of the budget is still available
    bool failingLow = false;     ///< the iteration in progress is below its window
    bool followPv = false;       ///< the node to be ordered still lies on the last line
};

/// The one of the engine, with its parts.
extern Searcher theSearcher;

/// Makes the engine ready for use: the tables that never change, the piece values, and the board
/// that tells the searcher of new games. Called once, at the start of a program.
void setUpEngine();

}  // namespace brivok
