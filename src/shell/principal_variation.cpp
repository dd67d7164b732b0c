#include "shell/principal_variation.h"

#include <cstdint>

#include "movegen/san.h"

namespace brivok {

namespace {

/// Undo records needed to name and make one more move of a line.
constexpr int PlyRoomForText = 4;

unsigned long moveNumber(const Board& board) { return board.gamePly() / 2 + 1; }

}  // namespace

std::string moveNumberText(const Board& board) {
    return std::to_string(moveNumber(board)) + (board.sideToMove == White ? ". " : ". ... ");
}

std::string renderPv(const SearchProgress& progress, PvStyle style) {
    Board& b = progress.board;
    const std::uint32_t plyBefore = b.ply;
    const bool san = style == PvStyle::San;
    std::string text;
    for (int c = 1; c < b.pvLength[1]; ++c) {
        const Move move = b.pvTable[1][c];
        if (san && (c == 1 || b.sideToMove == White)) text += moveNumberText(b);
        text += (san ? moveToSan(b, move) : moveToCoordinate(move)) + " ";
        b.makeMove(move);
    }

    // Extend from the transposition table
    for (int added = 0; added < progress.iteration && b.ply < UndoRecords - PlyRoomForText;
         ++added) {
        const Move move = progress.table.bestMove(b);
        if (move == NoMove) break;
        const std::string number =
            b.sideToMove == White ? std::to_string(moveNumber(b)) + "." : std::string();
        const std::string name = san ? moveToSan(b, move) : moveToCoordinate(move);
        b.makeMove(move);
        if (b.moverInCheck()) {
            b.unmakeMove();
            break;
        }
        if (san) text += number + " <";
        text += name;
        text += san ? "> " : " ";
    }
    while (b.ply > plyBefore) b.unmakeMove();
    return text;
}

}  // namespace brivok
