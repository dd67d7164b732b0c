#include "engine_positions.h"

#include <vector>

#include "../signature.h"
#include "../start.h"
#include "board/static_tables.h"
#include "egtb/table_index.h"
#include "movegen/legal_moves.h"
#include "shell/protocols.h"

namespace brivok {

namespace {

constexpr std::size_t CheckedCount = 32;

/// Digest of the state that make and unmake write, including keys computed from scratch.
std::uint64_t digest(std::span<const Board> boards) {
    std::uint64_t sum = 0;
    const auto mix = [&sum](std::uint64_t value) { sum = (sum ^ value) * 0x100000001B3U; };
    for (const Board& board : boards) {
        for (const std::uint64_t word :
             {board.hashKey, board.pawnKey, board.computeHashKey(), board.computePawnKey(),
              board.occRot90, board.occDiagNE, board.occDiagSE, board.colourOcc[0],
              board.colourOcc[1], std::uint64_t{board.ply}, std::uint64_t{board.fiftyCount}}) {
            mix(word);
        }
    }
    return sum;
}

std::vector<Board> makePositions() {
    prepareEngine();
    std::vector<Board> made;
    for (const TestPosition& position : signaturePositions()) {
        if (position.variant != Variant::Normal) continue;
        theBoard.setPositionFromFen(position.fen);
        made.push_back(theBoard);
    }
    return made;
}

std::vector<Board> makeCheckedPositions() {
    std::vector<Board> made;
    made.reserve(CheckedCount);
    for (const BoardMove& next : legalMoves()) {
        if (made.size() == CheckedCount) break;
        next.board->makeMove(next.move);
        if (next.board->inCheck()) made.push_back(*next.board);
        next.board->unmakeMove();
    }
    return made;
}

}  // namespace

void prepareEngine() {
    [[maybe_unused]] static const bool done = [] {
        startEngine();
        prepareTableIndex();
        allocateTables();
        return true;
    }();
}

std::span<Board> positions() {
    static std::vector<Board> made = makePositions();
    return made;
}

std::span<Board> quietPositions() {
    static std::vector<Board> made = [] {
        std::vector<Board> quiet;
        for (const Board& board : positions()) {
            if (!board.inCheck()) quiet.push_back(board);
        }
        return quiet;
    }();
    return made;
}

std::span<Board> checkedPositions() {
    static std::vector<Board> made = makeCheckedPositions();
    return made;
}

std::span<const BoardMove> legalMoves() {
    static const std::vector<BoardMove> all = [] {
        std::vector<BoardMove> found;
        for (Board& board : positions()) {
            forEachLegalMove(board, [&](Move move) { found.push_back({&board, move}); });
        }
        return found;
    }();
    return all;
}

UnchangedBoards::UnchangedBoards(benchmark::State& benchmarkState, std::span<Board> watched)
    : state(benchmarkState), boards(watched), before(digest(watched)) {}

UnchangedBoards::~UnchangedBoards() {
    if (digest(boards) != before) state.SkipWithError("a board has changed");
}

}  // namespace brivok
