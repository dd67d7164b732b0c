#include "movegen/move_text.h"

#include "board/coordinate.h"
#include "movegen/legal_moves.h"

namespace brivok {

namespace {

/// What tells a piece apart from another of its code that can go to the same square: its file
/// letter, its rank digit when the rival shares the file, or nothing without a rival. The first
/// rival in the order of the list decides.
std::string disambiguation(Board& board, Move move) {
    MoveList list;
    generateForPosition(board, list);
    const std::string from = squareName(moveFrom(move));
    for (int i = 0; i < board.moveCount; ++i) {
        const Move rival = list[i];
        if (moveTo(rival) != moveTo(move) || moveFrom(rival) == moveFrom(move) ||
            movePiece(rival) != movePiece(move)) {
            continue;
        }
        if (!leavesKingSafe(board, rival)) continue;
        return fileOf(moveFrom(rival)) == fileOf(moveFrom(move)) ? from.substr(1)
                                                                 : from.substr(0, 1);
    }
    return "";
}

std::string pawnText(const Board& board, Move move) {
    const std::string to = squareName(moveTo(move));
    const bool captures = board.squares[moveTo(move)] != Empty || moveIsEnPassant(move);
    std::string text = captures ? squareName(moveFrom(move)).substr(0, 1) + "x" + to : to;
    if (movePromotion(move) != Empty) text += std::string("=") + PieceLetters[movePromotion(move)];
    return text;
}

std::string pieceText(Board& board, Move move) {
    std::string text(1, PieceLetters[movePiece(move)]);
    text += disambiguation(board, move);
    if (moveCapture(move) != Empty) text += "x";
    return text + squareName(moveTo(move));
}

/// "+" or "#" for the side to move of the present position, or nothing.
std::string checkMark(Board& board) {
    if (!board.inCheck()) return "";
    MoveList replies;
    generateEvasions(board, replies);
    for (int i = 0, count = board.moveCount; i < count; ++i) {
        if (leavesKingSafe(board, replies[i])) return "+";
    }
    return "#";
}

}  // namespace

std::string moveToSan(Board& board, Move move) {
    if (move == NoMove) return "xxxx";
    std::string text;
    if (moveCastle(move) != NoCastling) {
        text = moveCastle(move) == KingSide ? "O-O" : "O-O-O";
    } else if (isPawn(movePiece(move))) {
        text = pawnText(board, move);
    } else {
        text = pieceText(board, move);
    }
    board.makeMove(move);
    if (board.moverInCheck()) {
        text = "xxxx";
    } else {
        text += checkMark(board);
    }
    board.unmakeMove();
    return text;
}

Move parseMove(Board& board, std::string_view text) {
    if (!IsMoveText(text)) return NoMove;
    MoveList list;
    generateForPosition(board, list);
    Move found = NoMove;
    for (int i = 0, count = board.moveCount; i < count; ++i) {
        if (moveToCoordinate(list[i]) == text && leavesKingSafe(board, list[i])) found = list[i];
    }
    return found;
}

}  // namespace brivok
