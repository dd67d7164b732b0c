#include "shell/board_diagram.h"

#include <string>

#include "shell/base/console.h"

namespace brivok {

namespace {

constexpr char Rule[] = "   +---+---+---+---+---+---+---+---+";

/// File letters, with "#" for the home files of king and rooks that still have castling rights.
std::string fileLabels(const Board& board, Side side) {
    const bool white = side == White;
    const Square* const rooks = white ? board.whiteRookStart : board.blackRookStart;
    const std::uint32_t kingSide = white ? WhiteMayKingSide : BlackMayKingSide;
    const std::uint32_t queenSide = white ? WhiteMayQueenSide : BlackMayQueenSide;
    std::string labels;
    for (int file = 0; file < 8; ++file) {
        const auto isHome = [&](std::uint32_t rights, Square home) {
            return (board.castling & rights) != 0 && fileOf(home) == file;
        };
        const bool marked = isHome(kingSide | queenSide, board.kingStart[whiteFirst(side)]) ||
                            isHome(kingSide, rooks[1]) || isHome(queenSide, rooks[0]);
        labels += marked ? '#' : static_cast<char>('a' + file);
        labels += "   ";
    }
    return labels;
}

std::string squareText(const Board& board, Square sq) {
    const Piece piece = board.squares[sq];
    if (piece == Empty) return (rowOf(sq) + sq) % 2 == 1 ? " . |" : "   |";
    const std::string letter(1, PieceLetters[piece]);
    return sideOf(piece) == White ? " " + letter + " |" : "=" + letter + "=|";
}

}  // namespace

void PrintBoard(Application& app, const Board& board) {
    std::string text = "\n     " + fileLabels(board, Black) + "\n" + Rule + "\n";
    const int pawnRow = board.sideToMove == White ? 6 : 1;
    for (int row = 0; row < 8; ++row) {
        const std::string rank{' ', static_cast<char>('8' - row)};
        text += rank + " |";
        for (int file = 0; file < 8; ++file) text += squareText(board, squareAt(file, row));
        text += rank;
        if (row == pawnRow) text += "   #";
        text += std::string("\n") + Rule + "\n";
    }
    text += "     " + fileLabels(board, White) + "\n\n";
    Print(app, "%s", text.c_str());
}

}  // namespace brivok
