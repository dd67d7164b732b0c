#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "board/board.h"
#include "hash/search_stats.h"
#include "hash/transposition_table.h"
#include "movegen/generate.h"

namespace brivok {

/// Depth is measured in sixteenths of a ply. A node with less than a ply left is quiescence.
inline constexpr int OnePly = 16;

/// Scores are centipawns from the side to move. A side that is mated at search ply p scores
/// p - MateScore; beyond MateBound all scores are mates.
inline constexpr int DrawScore = 0;
inline constexpr int MateScore = 32767;  ///< of a mate at ply 0

/// More reversible half-moves than this are a draw.
inline constexpr std::uint32_t FiftyMoveLimit = 100;

/// `maxIteration` when no fixed depth is set.
inline constexpr int NoFixedDepth = 40;

/// The iterations before this one always finish. From here on the clock may end the deepening, and
/// a ponder move is trusted.
inline constexpr int FirstTimedIteration = 3;

/// No fixed depth is larger: the depth of such an iteration, in units, still fits an int.
inline constexpr std::int64_t DeepestIteration = 100'000'000;

/// Nodes between two looks at the input and the clock. The first look comes at the first node.
inline constexpr std::uint32_t PollInterval = 20000;
/// The same while it ponders.
inline constexpr std::uint32_t PonderPollInterval = 5000;

/// State of the search; odd values mean that one is running.
enum class SearchMode : int { Idle = 0, Thinking = 1, Pondering = 3, Analysing = 5 };

/// Why a game has ended.
enum class GameOutcome : int {
    None = 0,
    Stalemate = 1,
    BlackMates = 2,
    WhiteMates = 3,
    FiftyMoves = 4,
    Repetition = 5,
    InsufficientMaterial = 6
};

/// The search: iterative deepening with aspiration windows over a principal-variation search
/// (Marsland and Campbell, 1982) with null move, and a quiescence search of captures. One thread;
/// the outside is reached by polling only.
class Searcher final : public NewGameListener {
public:
    Searcher();

    /// Searches the position on the board and returns the move to play, or 0 when there is none;
    /// `gameOutcome` then tells why. Returns when the search is over; lines that arrive meanwhile
    /// are handled on its stack. The caller sets `searchMode`, `searchStartTime`, `maxIteration`,
    /// `nodeLimit` and the time control before.
    Move think();

    /// A game begins: the clocks get their defaults, and its result is open.
    void onNewGame() override;

    SearchMode searchMode = SearchMode::Idle;  ///< what the caller wants, Idle when over
    int maxIteration = NoFixedDepth;  ///< last iteration; any other value turns the clock off
    std::uint32_t nodeLimit = 0;      ///< stop after this many nodes; 0 for none
    std::uint32_t searchStartTime;    ///< centiseconds
    bool ponderEnabled = true;        ///< search in the opponent's time
    bool postThinking = true;         ///< print thinking lines outside UCI
    bool stopSearch = false;          ///< the running search is to unwind

    GameOutcome gameOutcome = GameOutcome::None;  ///< set by think()
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

    /// Prints how far the search in progress has come, without a line of moves.
    void printAnalysisStatus();

    /// Notes the counters of the search in the log.
    void printStatistics() const;

    /// Forgets the root list; a search makes its own.
    void clearRootMoves();

private:
    /// What every node keeps on its own stack frame.
    struct Frame {
        MoveList moves;
        int orderScores[MaxMoves];
        int seeValues[MaxMoves];
        int count = 0;
    };

    int searchRoot(int alpha, int beta, int depth);
    bool isRootDrawn();
    int search(int alpha, int beta, int depth, int searchPly, bool allowNull,
               bool recaptureExtended);
    int quiesce(int alpha, int beta, int searchPly, bool checkRepetition);

    int searchChild(int alpha, int beta, int newDepth, int childPly, bool recaptured);
    [[nodiscard]] bool isRepetitionDraw(int searchPly) const;
    [[nodiscard]] bool mayProbeTablebases(int searchPly) const;
    [[nodiscard]] int tableDrawScore() const;
    [[nodiscard]] int limitExtension(int extension, int searchPly) const;

    /// What the extensions of a move depend on besides the move.
    struct NodeFacts {
        bool mateThreat;
        bool recaptureExtended;  ///< the parent's move got the recapture extension
        bool onlyReply;          ///< the one move out of a check
    };

    /// The extension of the move just made, in units. `recaptured` tells whether the recapture
    /// extension is part of it; the flag of the next ply's check is set on the way.
    int extensionOf(Move m, Move prev, const NodeFacts& node, int searchPly, bool& recaptured);
    [[nodiscard]] bool isSeventhRankPush(Move m) const;

    void scoreMoves(Frame& frame, Move hashMove, int searchPly);
    static Move pickMove(Frame& frame, int& index);

    /// True when the search must stop now. In the common case one comparison, which bears the
    /// counters' wrap-around in a very long analysis.
    [[nodiscard]] bool pollSearch() {
        return static_cast<std::int32_t>(searchStats.nodes - searchStats.nextPoll) > 0 &&
               pollInputAndClock();
    }
    [[nodiscard]] bool pollInputAndClock();
    [[nodiscard]] bool endsByItself() const;
    [[nodiscard]] bool isTimed() const;
    [[nodiscard]] std::uint32_t elapsed() const;

    void beginSearch();
    void allocateBudget();
    void setBudget();
    Move askBook();
    void makePonderMove();
    [[nodiscard]] bool isBudgetNearlySpent() const;
    [[nodiscard]] GameOutcome outcomeWithoutMoves() const;
    void noteFinishedIteration();
    void findPonderMove(Move bestMove);

    /// What a line of thinking is about.
    enum class Event { NewBest, Finished, FailedHigh, FailedLow };

    void printRootMove(bool firstOfPass);
    /// The line of a new best move or a finished or failed iteration, once they are worth showing.
    void printIteration(int score, Event event);
    void printUciInfo(int score, Event event);
    void printUciRootMove(bool firstOfPass);
    void printThinking(int score, Event event);
    void printStat01(const std::string& moveText);
    void printPeriodic();
    /// The principal variation, continued from the transposition table, in coordinate text or in
    /// SAN with move numbers and the continuation in angle brackets.
    enum class PvStyle { San, Coordinate };
    std::string renderPv(PvStyle style);

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

/// The one of the engine.
extern Searcher theSearcher;

}  // namespace brivok
