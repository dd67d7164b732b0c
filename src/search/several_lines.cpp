#include <algorithm>
#include <array>
#include <utility>

#include "search/searcher.h"

/// @file
/// The search for several best lines. An iteration searches the best move, then, without it, the
/// best of the others, and so on, each with a window around that line's own last score.

namespace brivok {

/// A line found by a pass over the root moves.
struct Searcher::Line {
    int score = 0;
    int selDepth = 0;
    std::size_t length = 0;
    std::array<Move, MaxSearchPly> moves{};

    [[nodiscard]] Move move() const { return moves[0]; }
};

/// The lines found so far: first those of the current iteration, in descending order of their
/// scores, then what the last iteration has left.
struct Searcher::BestLines {
    std::array<Line, MaxLines> lines{};
    std::size_t wanted = 0;
    std::size_t count = 0;
    std::size_t current = 0;  ///< how many are of the current iteration

    [[nodiscard]] std::span<Line> all() { return {lines.data(), count}; }
    [[nodiscard]] const Line& best() const { return lines[0]; }

    /// Adds a line of the current iteration. The last iteration's line of the same move makes room
    /// for it, or else the last line.
    void add(const Line& line) {
        const auto begin = lines.begin();
        const auto place = std::upper_bound(
            begin, begin + current, line,
            [](const Line& left, const Line& right) { return left.score > right.score; });
        auto old = std::find_if(begin + current, begin + count,
                                [&](const Line& l) { return l.move() == line.move(); });
        if (old == begin + count) {
            if (count == wanted) {
                --old;
            } else {
                ++count;
            }
        }
        std::move_backward(place, old, old + 1);
        *place = line;
        ++current;
    }

    /// Keeps the order in an iteration that was cut short: the lines that it has found are the best
    /// moves, so the others are worth no more.
    void limitOlderScores() {
        if (current == 0) return;
        for (Line& line : all().subspan(current)) {
            line.score = std::min(line.score, lines[current - 1].score);
        }
    }
};

Move Searcher::deepenLines(int wanted) {
    BestLines found;
    found.wanted = static_cast<std::size_t>(std::min({wanted, MaxLines, legalRootMoveCount}));
    std::pair<Move, int> told;  // the best move and its score
    for (iteration = 1; iteration <= maxIteration; ++iteration) {
        searchLines(found);
        iterationScore = found.best().score;
        if (gameOutcome != GameOutcome::None) break;
        if (found.count != 0) {
            noteFinishedIteration();
            const std::pair best(found.best().move(), iterationScore);
            if (!stopSearch || best != told) tellLines(found);
            told = best;
            // A mate in the first line says nothing about the others.
            if (isWantedMate(iterationScore) || isMateFound(found.all().back().score)) break;
        }
        if (stopSearch || isBudgetNearlySpent()) break;
    }
    return found.best().move();
}

/// One iteration: a line at a time, each without the moves of the lines before it.
void Searcher::searchLines(BestLines& found) {
    const int moves = root.count;
    const int legalMoves = legalRootMoveCount;
    found.current = 0;
    while (!stopSearch && found.current < found.wanted && searchLine(found)) {
    }
    root.count = moves;
    legalRootMoveCount = legalMoves;

    found.limitOlderScores();
    if (found.current != 0) leaveLine(found.best());
}

/// Searches the next line. A stop drops it unless it is the first, which counts as far as it got.
/// False if there is no such line.
bool Searcher::searchLine(BestLines& found) {
    const Line& last = found.lines[found.current];
    iterationScore = last.score;
    followLine(last);

    Line line;
    Move move = NoMove;
    if (!searchIteration(line.score, move)) return false;  // the game is over
    if (bestRootMove != NoMove && !failingLow) {
        move = bestRootMove;
    } else {
        line.score = iterationScore;  // of a fail high
    }
    if (move == NoMove || (stopSearch && found.current != 0)) return false;

    line.selDepth = selDepth;
    copyLine(move, line);
    found.add(line);
    setAside(move);
    return true;
}

/// Makes the line the principal variation that the next pass tries first.
void Searcher::followLine(const Line& line) {
    auto& row = board->pvTable[RootPly];
    Move* const end = std::copy_n(line.moves.data(), line.length, row + RootPly);
    std::fill(end, std::end(row), NoMove);
    board->pvLength[RootPly] = RootPly + static_cast<int>(line.length);
}

/// Fills in the principal variation of the pass; a pass that was stopped may have none for the
/// move.
void Searcher::copyLine(Move move, Line& line) const {
    const auto& row = board->pvTable[RootPly];
    const int length = board->pvLength[RootPly] - RootPly;
    line.moves[0] = move;
    line.length = 1;
    if (length < 1 || row[RootPly] != move) return;
    line.length = static_cast<std::size_t>(length);
    std::copy_n(row + RootPly, length, line.moves.begin());
}

/// Hides a root move, behind the end of the list, from the passes that follow.
void Searcher::setAside(Move move) {
    const auto at = std::find(root.moves, root.moves + root.count, move) - root.moves;
    std::rotate(root.moves + at, root.moves + at + 1, root.moves + root.count);
    std::rotate(rootMoveNodes + at, rootMoveNodes + at + 1, rootMoveNodes + root.count);
    --root.count;
    --legalRootMoveCount;
}

/// Leaves the line on the board and its move in the transposition table, where later passes have
/// stored theirs.
void Searcher::leaveLine(const Line& line) {
    followLine(line);
    int depth = iterationDepth();
    TranspositionTable::Found found;
    bool allowNull = true;
    (void)probeTable(RootPly, line.score, depth, found, allowNull);
    if (board->inCheckAtPly[RootPly] != 0) depth += settings.checkExtension;
    storeInTable(RootPly, line.score, BoundLower, line.move(), found.mateThreat, depth);
}

void Searcher::tellLines(BestLines& found) {
    if (iteration < listener->firstToldIteration) return;
    std::array<SearchLine, MaxLines> lines{};
    std::ranges::transform(found.all(), lines.begin(), [](const Line& line) {
        return SearchLine{.score = line.score,
                          .selDepth = line.selDepth,
                          .moves = std::span(line.moves).first(line.length)};
    });
    listener->onLines(progress(), std::span(lines).first(found.count));
}

}  // namespace brivok
