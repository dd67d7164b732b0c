#include "shell/modern/interface_moves.h"

#include <cstdlib>
#include <optional>

#include "board/coordinate.h"
#include "movegen/legal_moves.h"
#include "movegen/san.h"

namespace brivok {

namespace {

/// The castling rook's home square.
Square castlingRook(const Board& board, Move castling) {
    const bool white = sideOf(movePiece(castling)) == White;
    const auto& rooks = white ? board.whiteRookStart : board.blackRookStart;
    return rooks[moveCastle(castling) == KingSide ? 1 : 0];
}

/// The legal move that is wanted, or NoMove if there is none or more than one.
template <class Wanted>
Move onlyMove(Board& board, Wanted wanted) {
    Move found = NoMove;
    int fitting = 0;
    forEachLegalMove(
        board,
        [&](Move move) {
            found = move;
            return ++fitting < 2;
        },
        wanted);
    return fitting == 1 ? found : NoMove;
}

/// O-O and O-O-O, with letters of either case or zeros.
Castle castleOfLetters(std::string_view text) {
    std::string shape(text);
    for (char& c : shape) {
        if (c == '0' || c == 'o') c = 'O';
    }
    if (shape == "O-O") return KingSide;
    return shape == "O-O-O" ? QueenSide : NoCastling;
}

std::optional<Square> squareOf(std::string_view text) {
    if (text.size() != 2 || text[0] < 'a' || text[0] > 'h' || text[1] < '1' || text[1] > '8') {
        return std::nullopt;
    }
    return squareAt(text[0] - 'a', '8' - text[1]);
}

/// Where the text sends the king that stands on `king`, in forms such as e1h1, Ke1-h1 and Kxh1;
/// nullopt for any other text.
std::optional<Square> kingTarget(std::string_view text, Square king) {
    const bool named = text.starts_with('K');
    if (named) text.remove_prefix(1);
    const bool squareGiven = text.starts_with(squareName(king)) && text.size() > 2;
    if (squareGiven) text.remove_prefix(2);
    if (!named && !squareGiven) return std::nullopt;
    if (!text.empty() && std::string_view("x:-").find(text.front()) != text.npos) {
        text.remove_prefix(1);
    }
    return squareOf(text);
}

/// The king's move to a square: an ordinary one, or castling by the rook's square or its own.
Move kingMove(Board& board, Square king, Square to, bool castles) {
    return onlyMove(board, [&](Move move) {
        if (moveFrom(move) != king || !isKing(movePiece(move))) return false;
        if ((moveCastle(move) != NoCastling) != castles) return false;
        if (!castles) return moveTo(move) == to;
        const int files = std::abs(fileOf(king) - fileOf(to));
        return castlingRook(board, move) == to || (moveTo(move) == to && files >= 2);
    });
}

}  // namespace

Move readMove(Board& board, std::string_view text) {
    text = text.substr(0, text.find_last_not_of("+#") + 1);
    if (const Castle castle = castleOfLetters(text); castle != NoCastling) {
        return onlyMove(board, [&](Move move) { return moveCastle(move) == castle; });
    }
    const Square king = board.kingSquare[whiteFirst(board.sideToMove)];
    if (const std::optional<Square> to = kingTarget(text, king)) {
        const Move step = kingMove(board, king, *to, false);
        return step != NoMove ? step : kingMove(board, king, *to, true);
    }
    const Move move = readSan(board, text).move;
    return moveCastle(move) == NoCastling ? move : NoMove;
}

std::string moveText(const Board& board, Move move, CastlingStyle style) {
    if (move == NoMove) return "0000";
    const bool ontoRook = style == CastlingStyle::KingOntoRook && moveCastle(move) != NoCastling &&
                          board.rules->variant == Variant::Fischerandom;
    if (!ontoRook) return moveToCoordinate(move);
    return squareName(moveFrom(move)) + squareName(castlingRook(board, move));
}

}  // namespace brivok
