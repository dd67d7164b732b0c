#include "board/coordinate.h"

#include "shell/base/settings.h"

namespace brivok {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

char promotionLetter(Piece piece) { return static_cast<char>(PieceLetters[piece] - 'A' + 'a'); }

}  // namespace

std::string squareName(Square sq) {
    return {static_cast<char>('a' + fileOf(sq)), static_cast<char>('0' + rankNumber(sq))};
}

std::string moveToCoordinate(Move move) {
    if (settings.variant == Variant::Fischerandom && moveCastle(move) != NoCastling) {
        return moveCastle(move) == KingSide ? "O-O" : "O-O-O";
    }
    std::string text = squareName(moveFrom(move)) + squareName(moveTo(move));
    if (movePromotion(move) != Empty) text += promotionLetter(movePromotion(move));
    return text;
}

bool IsMoveText(std::string_view text) {
    if (settings.variant == Variant::Fischerandom && (text == "O-O" || text == "O-O-O"))
        return true;
    if (text.size() != 4 && text.size() != 5) return false;
    return isLetter(text[0]) && isDigit(text[1]) && isLetter(text[2]) && isDigit(text[3]) &&
           (text.size() == 4 || isLetter(text[4]));
}

}  // namespace brivok
