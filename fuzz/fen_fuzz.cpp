// A libFuzzer target: whatever a FEN line says, the resulting position can be played from, and the
// strict reader refuses the line or sets up a position that a game can reach. The first character
// chooses the variant: 0, 1 or 2.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "../apps/book/position.h"
#include "../apps/common/app_error.h"
#include "board/coordinate.h"
#include "board/strict_fen.h"
#include "eval/evaluate.h"
#include "expect.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "movegen/san.h"
#include "search/searcher.h"
#include "session.h"
#include "shell/base/settings.h"
#include "shell/modern/interface_moves.h"

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

/// The same for the texts of modern interfaces.
void readBackAsModern(Board& board, Move move) {
    for (const CastlingStyle style : {CastlingStyle::Letters, CastlingStyle::KingOntoRook}) {
        const std::string text = moveText(board, move, style);
        expect(readMove(board, text) == move, "a move is found by its text");
        expect(readMove(board, text + "+") == move, "a move is found by its text and a mark");
    }
    const Move named = readMove(board, moveToSan(board, move));
    expect(named == move || named == NoMove, "a name is no other move");
}

template <class ReadBack>
void playEveryMove(Board& board, bool playable, ReadBack back) {
    MoveList moves;
    generateForPosition(board, moves);
    for (int i = 0, count = board.moveCount; i < count; ++i) {
        expect(!playable || board.isMoveValid(moves[i]), "a generated move is valid");
        if (leavesKingSafe(board, moves[i]) && playable) back(board, moves[i]);
    }
}

/// The strict reader finds a fault and leaves the board alone, or none and the position is one that
/// a game can reach, with rights whose kings and rooks are there.
void setUpAsModern(Board& board, std::string_view line) {
    board.NewGame();
    board.playGameMove(parseMove(board, "e2e4"));
    static Board before;
    before = board;
    if (const std::string fault = setUpPosition(board, line); !fault.empty()) {
        expect(fault.find('\n') == fault.npos, "a fault is one line");
        expect(board.hashKey == before.hashKey && board.ply == before.ply &&
                   std::ranges::equal(board.squares, before.squares) &&
                   board.undo[0].move == before.undo[0].move,
               "the board is as before");
        return;
    }
    expect(isPlayable(board), "a game can reach the position");
    for (int kind = 0; kind < CastlingKinds; ++kind) {
        if ((board.castling & rightOf(kind)) == 0) continue;
        const Side side = kind < BlackKingSide ? White : Black;
        const auto* const rooks = side == White ? board.whiteRookStart : board.blackRookStart;
        expect(board.castlingHomesFit(kind), "the variant permits the right");
        expect(board.squares[rooks[kind % 2 == 0 ? 1 : 0]] == pieceOf(Kind::Rook, side) &&
                   board.squares[board.kingStart[whiteFirst(side)]] == pieceOf(Kind::King, side),
               "king and rook are on their homes");
    }
    playEveryMove(board, true, readBackAsModern);
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
    playEveryMove(board, isPlayable(board), readBack);
    setUpAsModern(board, line);
    setUpForBook(board, line);
    return 0;
}
