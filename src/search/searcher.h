#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "board/board.h"
#include "egtb/tablebase_probe.h"
#include "eval/evaluate.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "movegen/generate.h"
#include "search/game_end.h"
#include "search/ordered_moves.h"
#include "search/score.h"
#include "search/search_listener.h"
#include "search/search_request.h"
#include "search/time_control.h"
#include "shell/base/settings.h"

namespace brivok {

/// Depth is measured in sixteenths of a ply. A node with less than one ply left is quiescence.
inline constexpr int OnePly = 16;

/// Iterations before this one always finish. From this one on the clock may stop the search, and a
/// ponder move is trusted.
inline constexpr int FirstTimedIteration = 3;

/// Upper limit of a fixed depth: in units, the depth of that iteration still fits an int.
inline constexpr std::int64_t DeepestIteration = 100'000'000;

/// Nodes between two polls of the input and the clock. The first poll is at the first node.
inline constexpr std::uint32_t PollInterval = 20000;
/// PollInterval while pondering.
inline constexpr std::uint32_t PonderPollInterval = 5000;

/// Everything a search works with, except the piece values, the endgame tables and the book, which
/// belong to the process. Two searchers with separate parts do not interfere.
struct SearchParts {
    Board& board;                            ///< the position; restored when a search ends
    const Settings& settings;                ///< read at each use
    SearchStats& stats;                      ///< zeroed at the start of each search
    TimeControl& clock;                      ///< commands may set it during a search
    TranspositionTable& transpositionTable;  ///< keeps its entries between searches
    Evaluation& evaluation;                  ///< includes the evaluation and pawn tables
    const TablebaseState& tablebases;        ///< endgame tables of the process
};

/// The search: iterative deepening with aspiration windows over a principal variation search
/// (Marsland and Campbell, 1982) with null move, and a quiescence search of captures. It has one
/// thread and talks to the outside only through its listener.
class Searcher final : public NewGameListener {
public:
    /// The parts must outlive the searcher.
    explicit Searcher(const SearchParts& parts);

    /// Searches the position on the board and returns the move to play, or NoMove if there is none;
    /// `gameOutcome` then says why. Lines that arrive during the search are handled on its stack,
    /// by the listener. `searchMode` keeps its value, because a ponder hit may have changed it: the
    /// caller sets it to Idle.
    Move think(const SearchRequest& request, SearchListener& toTell);

    /// The limits of the last search. They persist: a fixed depth holds until it is lifted.
    [[nodiscard]] SearchRequest standingRequest() const {
        return {.maxIteration = maxIteration, .nodeLimit = nodeLimit};
    }

    /// Resets the clocks to their defaults and clears the result of the game.
    void onNewGame() override;

    /// Forgets the results and the limits of the last search, so that the next one starts without
    /// them: an outcome would end it at once, and limits persist. The hash tables keep what they
    /// know.
    void forgetGame();

    // --- State that callers may read and set ------------------------------------------------

    SearchMode searchMode = SearchMode::Idle;  ///< what the caller wants; Idle between searches
    /// Last iteration; any value but NoFixedDepth disables the clock.
    int maxIteration = NoFixedDepth;
    std::uint32_t nodeLimit = 0;    ///< stop after this many nodes; 0 for no limit
    std::uint32_t searchStartTime;  ///< centiseconds
    bool ponderEnabled = true;      ///< search on the opponent's time
    bool postThinking = true;       ///< print thinking lines outside UCI
    bool stopSearch = false;        ///< tells the running search to unwind

    // Results of a search, valid until the next one, which reads only `ponderMove` and
    // `gameOutcome` of them.
    GameOutcome gameOutcome = GameOutcome::None;  ///< why the game is over
    Move ponderMove = NoMove;                     ///< the opponent's expected reply
    std::uint64_t hashPonder = 0;                 ///< key of the position before the ponder move
    /// Whether the move returned is from the opening book.
    bool bookMove = false;
    int iterationScore = 0;  ///< score of the last completed iteration
    int iteration = 0;       ///< current iteration, from 1
    int selDepth = 0;        ///< deepest ply reached by quiescence in this pass
    std::array<std::uint32_t, NoFixedDepth + 1> nodesAtIteration{};  ///< by iteration number

    Board* board;  ///< the board to search; not owned

    /// Turns a ponder search into the search for a move: budgets it by the current clocks, with the
    /// time counted from the start of pondering.
    void takePonderHit();

    /// After the engine's move: whether its score is hopeless and the opponent is neither in check
    /// nor short of time.
    [[nodiscard]] bool ShouldCountResign() const;

    /// Progress of the current search.
    [[nodiscard]] SearchProgress progress() const;

private:
    // --- think.cpp: from the request to the move --------------------------------------------

    void prepare(const SearchRequest& request);
    Move askBook(const SearchRequest& request);
    void makePonderMove();
    /// Fills the root list, with `searchMoves` alone if there are any, and counts its legal moves.
    /// Returns the index of the last legal one.
    int listRootMoves(std::span<const Move> searchMoves);
    void beginSearch();
    void allocateBudget();
    void setBudget();
    /// Deepens until the search is over. Returns the best move of the last iteration that counts.
    Move deepen();
    /// One iteration: a pass with a window around the last score, plus any re-searches. False if it
    /// ended the game.
    bool searchIteration(int& score, Move& bestMove);
    /// The nominal depth of the iteration, in units.
    [[nodiscard]] int iterationDepth() const { return iteration * OnePly + OnePly / 2; }
    int searchAgain(SearchEvent event, int score, int alpha, int beta, int depth);
    void noteFinishedIteration();
    /// Whether the score is a mate that ends the deepening: within the nominal depth, or in as few
    /// moves as the request wants.
    [[nodiscard]] bool isMateFound(int score) const;
    [[nodiscard]] bool isWantedMate(int score) const;
    [[nodiscard]] bool isBudgetNearlySpent() const;
    void findPonderMove(Move bestMove);
    void note(const std::string& line) { listener->onNote(line); }
    void tellIteration(int score, SearchEvent event);
    void tellManyNodes();

    // --- several_lines.cpp ------------------------------------------------------------------

    struct Line;
    struct BestLines;
    /// Like deepen(), for several lines. Returns the move of the best one.
    Move deepenLines(int wanted);
    void searchLines(BestLines& found);
    bool searchLine(BestLines& found);
    void followLine(const Line& line);
    void copyLine(Move move, Line& line) const;
    void setAside(Move move);
    void leaveLine(const Line& line);
    void tellLines(BestLines& found);

    // --- root_search.cpp --------------------------------------------------------------------

    static constexpr int RootPly = 1;
    int searchRoot(int alpha, int beta, int depth);
    int searchRootMove(Move m, int alpha, int beta, int newDepth, int movesDone, int& best);
    [[nodiscard]] bool isRootDrawn();

    // --- alpha_beta.cpp ---------------------------------------------------------------------

    /// Data shared by the moves of a node.
    struct Node {
        int beta;
        int depth;
        int searchPly;
        bool inCheck;
        bool mateThreat;         ///< whether a null move was answered by mate
        bool recaptureExtended;  ///< whether the parent's move got the recapture extension
        bool onlyReply = false;  ///< whether there is only one move, an evasion
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
    /// The score after a move: from the main search, or from quiescence if less than a ply is left.
    int searchChild(int alpha, int beta, int newDepth, int childPly, bool recaptured) {
        return newDepth >= OnePly ? -search(-beta, -alpha, newDepth, childPly, true, recaptured)
                                  : -quiesce(-beta, -alpha, childPly, true);
    }

    /// Extensions, in units, for a move just made that gives check or pushes a pawn to the seventh
    /// rank. The first one also sets the next ply's check flag.
    int checkExtensionOf(int searchPly);
    int pawnPushExtensionOf(Move m);
    /// All extensions of a move in the tree, limited. Sets `recaptured` if the recapture extension
    /// is among them.
    int extensionOf(Move m, const Node& node, bool& recaptured);
    [[nodiscard]] int limitExtension(int extension, int searchPly) const;

    /// Futility pruning and razoring of a late move, by material alone.
    enum class Pruning { None, ToQuiescence, OnePlyLess };
    Pruning pruningOf(int alpha, const Node& node, int extension);

    // --- quiescence.cpp ---------------------------------------------------------------------

    int quiesce(int alpha, int beta, int searchPly, bool checkRepetition);

    // --- move_ordering.cpp ------------------------------------------------------------------

    /// Scores the list from its start. Reads and writes `followPv`.
    void scoreMoves(OrderedMoves& list, Move hashMove, int searchPly);

    // --- search_clock.cpp -------------------------------------------------------------------

    /// Whether the search must stop now. Usually one comparison, which tolerates counters that wrap
    /// around in a very long analysis.
    [[nodiscard]] bool pollSearch() {
        return static_cast<std::int32_t>(stats.nodes - stats.nextPoll) > 0 && pollInputAndClock();
    }
    [[nodiscard]] bool pollInputAndClock();
    [[nodiscard]] bool mayGoOn(std::uint32_t used);
    [[nodiscard]] bool endsByItself() const;
    [[nodiscard]] bool isTimed() const;
    /// Whether the clock has a say in a search for a move.
    [[nodiscard]] bool usesClock() const { return clockCounts || maxIteration == NoFixedDepth; }
    [[nodiscard]] std::uint32_t elapsed() const;
    /// The nodes so far, from a counter that has at most once passed its end since the last poll.
    [[nodiscard]] std::uint64_t allNodes() const;

    // --- Parts ------------------------------------------------------------------------------

    const Settings& settings;
    SearchStats& stats;
    TimeControl& clock;
    TranspositionTable& transpositionTable;
    Evaluation& evaluation;
    const TablebaseState& tablebases;
    SearchListener* listener = nullptr;  ///< of the current search
    bool keepsGame = false;              ///< see SearchRequest
    bool clockCounts = false;            ///< see SearchRequest
    int mateIn = 0;                      ///< see SearchRequest
    bool tellsLines = false;             ///< onLines() instead of onIteration()

    // --- State of the current search --------------------------------------------------------

    OrderedMoves root{};  ///< pseudo-legal root moves; a pass only changes their ordering scores
    std::uint32_t rootMoveNodes[MaxMoves]{};  ///< by position in the root list
    std::uint64_t nodesAtPoll = 0;            ///< at the last poll
    int legalRootMoveCount = 0;
    int rootMovesTotal = 0;
    int rootMovesLeft = 0;
    Move bestRootMove = NoMove;
    std::string currentMoveText;
    float branchingFactor = 0;   ///< ratio of the last two iterations' nodes
    bool mayExtendTime = false;  ///< whether the single budget extension is still available
    bool failingLow = false;     ///< whether the current iteration is below its window
    /// Whether the node to be ordered is still on the last principal variation.
    bool followPv = false;
};

extern Searcher theSearcher;

/// Prepares the engine: constant tables, piece values, and the board's notification of the searcher
/// about new games. Call once, when a program starts.
void setUpEngine();

}  // namespace brivok
