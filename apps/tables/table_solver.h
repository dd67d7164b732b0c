#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "../common/app_error.h"
#include "board/board.h"

/// Solves positions: their values, those of their moves, and lines to mate. The tables are read as
/// the engine reads them, in blocks: that takes little memory, and packed files stay packed.
namespace brivok::tables {

/// The largest tables that can be read, including the kings.
inline constexpr int MostMenSolved = 6;

/// The worth of a position to one side, with best play on both sides.
struct PositionValue {
    enum class Result { Unknown, Loss, Draw, Win };
    Result result = Result::Unknown;
    unsigned moves = 0;  ///< to mate, of a win or a loss; 0 for a side that is mated
    std::string reason;  ///< why the value is unknown, such as "kqk.nbb is missing"

    [[nodiscard]] bool isKnown() const { return result != Result::Unknown; }
    /// A sooner win is better, and a later loss. Any value is better than none.
    [[nodiscard]] bool isBetterThan(const PositionValue& other) const;
    [[nodiscard]] bool equals(const PositionValue& other) const {
        return result == other.result && moves == other.moves;
    }
    /// "mate in 5", "draw", "mated in 5", or the reason.
    [[nodiscard]] std::string text() const;
};

/// A legal move and what it leads to, for the side that plays it.
struct SolvedMove {
    Move move = NoMove;
    std::string san;
    PositionValue value;
};

/// A line of best moves.
struct BestLine {
    std::vector<std::string> moves;  ///< SAN
    std::string gap;                 ///< why it ends before the mate; empty if it does not
};

/// Answers from the tables of some folders, without regard to castling, the fifty-move rule and
/// repetitions. All solvers share the engine's one set of registered tables: the last one made
/// decides which.
///
/// A position without a table still has a value if it ends the game, if neither side can mate, or
/// if all of its moves have values. That includes losses in 127 moves, which a table cannot hold.
class TableSolver {
public:
    /// `folders` is separated by "," or ";". Throws AppError if there are no tables. Any damaged
    /// table ends the program, see RegisterTables().
    explicit TableSolver(const std::string& folders);

    // All throw AppError if a file that they need turns out to be damaged.

    /// For the side to move.
    [[nodiscard]] PositionValue valueOf(const Board& position);

    /// All legal moves, the best first. Equally good ones are in the ASCII order of their names.
    [[nodiscard]] std::vector<SolvedMove> movesOf(const Board& position);

    /// The first of the best moves on either side, up to mate; no moves in a draw. Throws AppError
    /// if the tables contradict each other.
    [[nodiscard]] BestLine lineToMate(const Board& position);

private:
    void setUp(const Board& position);

    std::unique_ptr<Board> board;  ///< a working copy of the position
};

/// A FEN is not a legal position, or has more than MostMenSolved men.
class NotSolvable : public AppError {
    using AppError::AppError;
};

/// A board with the position of a FEN. Throws NotSolvable.
[[nodiscard]] std::unique_ptr<Board> boardToSolve(std::string_view fen);

/// The moves with their numbers: "1. Kb2 Kd3 2. Qe5", or "1... Kd3 2. Qe5" if Black begins.
[[nodiscard]] std::string numbered(const std::vector<std::string>& moves, Side first);

}  // namespace brivok::tables
