#include "shell/modern/modern_pv.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "board/coordinate.h"
#include "movegen/legal_moves.h"
#include "movegen/san.h"
#include "search/game_end.h"

namespace brivok {

namespace {

/// Undo records needed to name and make one more move.
constexpr std::uint32_t PlyRoomForText = 4;

/// Whether a game ends here in the eyes of an interface, which calls a draw as soon as it may be
/// claimed. Without a legal move nothing follows anyway.
bool endsGame(const Board& board) {
    return board.fiftyCount >= FiftyMoveLimit ||
           drawnBy<GameOutcome::Repetition, GameOutcome::InsufficientMaterial>(board) !=
               GameOutcome::None;
}

/// A line that grows on a board.
class Line {
public:
    Line(Board& start, ModernPv::Notation style) : board(start), notation(style) {}

    /// Plays and names the move. False, leaving all as it is, if the line cannot go on with it.
    bool add(Move move) {
        const bool ended = !text.empty() && endsGame(board);
        const bool hasRoom = board.ply + PlyRoomForText < UndoRecords;
        if (ended || !hasRoom || !isLegalMove(board, move)) return false;
        if (!text.empty()) text += ' ';
        text += name(move);
        board.makeMove(move);
        return true;
    }

    std::string text;

private:
    [[nodiscard]] std::string name(Move move) {
        if (notation == ModernPv::Notation::San) {
            const std::string san = moveToSan(board, move);
            // It tells a piece from one rival only.
            return readSan(board, san).move == move ? san : moveToCoordinate(move);
        }
        const bool ontoRook = notation == ModernPv::Notation::KingOntoRook;
        return moveText(board, move,
                        ontoRook ? CastlingStyle::KingOntoRook : CastlingStyle::Letters);
    }

    Board& board;
    const ModernPv::Notation notation;
};

}  // namespace

std::string ModernPv::render(const SearchProgress& progress, Notation notation) {
    const Board& board = progress.board;
    const Move* const first = &board.pvTable[1][1];
    const int length = std::max(board.pvLength[1] - 1, 0);
    return render(progress, {first, static_cast<std::size_t>(length)}, notation);
}

std::string ModernPv::render(const SearchProgress& progress, std::span<const Move> line,
                             Notation notation) {
    Board& board = *scratch;
    board = progress.board;
    board.newGameListener = nullptr;
    Line shown(board, notation);
    for (const Move move : line) {
        if (!shown.add(move)) return shown.text;
    }
    for (int added = 0; added < progress.iteration; ++added) {
        if (!shown.add(progress.table.bestMove(board))) break;
    }
    return std::move(shown.text);
}

}  // namespace brivok
