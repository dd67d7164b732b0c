// A libFuzzer target: whatever a FEN line says, the resulting position can be played from. The
// first character chooses the variant: 0, 1 or 2.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "../apps/book/position.h"
#include "../apps/common/app_error.h"
#include "board/coordinate.h"
#include "eval/evaluate.h"
#include "expect.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "movegen/san.h"
#include "search/searcher.h"
#include "session.h"
#include "shell/base/settings.h"

namespace brivok {
namespace {

using fuzz::expect;

/// One king per side, and the side not to move not in check. The engine makes promises only for
/// such positions, the ones a game can reach.
bool isPlayable(const Board& board) {
    const auto kings = [&board](Piece king) { return std::ranges::count(board.squares, king); };
    return kings(WhiteKing) == 1 && kings(BlackKing) == 1 && !board.moverInCheck();
}

/// Reading the texts of a legal move finds that move again and leaves the board unchanged.
void readBack(Board& board, Move move) {
    const std::uint64_t key = board.hashKey;
    expect(isLegalMove(board, move), "a move that is safe is legal");
    const std::string squares = moveToCoordinate(move);
    expect(moveToCoordinate(parseMove(board, squares)) == squares,
           "a move is found by its squares");
    // The engine disambiguates against one rival only.
    const SanReading reading = readSan(board, moveToSan(board, move));
    expect(reading.move == move || reading.fault == "ambiguous move",
           "a move is found by its name");
    expect(board.hashKey == key, "the board is as before");
}

void playEveryMove(Board& board) {
    const bool playable = isPlayable(board);
    MoveList moves;
    generateForPosition(board, moves);
    for (int i = 0, count = board.moveCount; i < count; ++i) {
        expect(!playable || board.isMoveValid(moves[i]), "a generated move is valid");
        if (leavesKingSafe(board, moves[i]) && playable) readBack(board, moves[i]);
    }
}

void setUpForBook(Board& board, std::string_view line) try {
    setPositionOrThrow(board, line);
} catch (const AppError&) {
}

}  // namespace
}  // namespace brivok

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    using namespace brivok;
    if (size == 0) return 0;
    fuzz::freshBoard();
    settings.variant = static_cast<Variant>(static_cast<unsigned char>(data[0]) % 3);
    const std::string_view line(data + 1, size - 1);
    Board& board = theBoard;
    board.setPositionFromFen(line);
    (void)Evaluate(board, -MateScore, MateScore);
    playEveryMove(board);
    setUpForBook(board, line);
    return 0;
}
