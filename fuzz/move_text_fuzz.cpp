// A libFuzzer target: the engine and the book builder read any word as the same legal move, or both
// reject it, and the reader for modern interfaces reads no other one. The first line, unless empty,
// sets up the position; the words of the other lines are played.

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

#include "board/coordinate.h"
#include "board/strict_fen.h"
#include "expect.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "movegen/san.h"
#include "session.h"
#include "shell/base/settings.h"
#include "shell/modern/interface_moves.h"

namespace brivok {
namespace {

/// Each line's words once more, in Fischer-random chess.
void playAsModern(Board& board, std::istringstream text) {
    settings.variant = Variant::Fischerandom;
    std::string word;
    std::getline(text, word);
    if (!word.empty()) (void)setUpPosition(board, word);
    while (text >> word) {
        const Move coordinate = parseMove(board, word);
        const Move san = readSan(board, word).move;
        const Move move = readMove(board, word);
        fuzz::expect(coordinate == NoMove || coordinate == move, "squares mean one move");
        fuzz::expect(move == NoMove || isLegalMove(board, move), "the move is legal");
        fuzz::expect(move == NoMove || san == NoMove || move == san, "a name is no other move");
        if (move != NoMove) board.playGameMove(move);
    }
}

}  // namespace
}  // namespace brivok

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    using namespace brivok;
    fuzz::freshBoard();
    Board& board = theBoard;
    std::istringstream text(std::string(data, size));
    std::string word;
    std::getline(text, word);
    if (!word.empty()) board.setPositionFromFen(word);
    while (text >> word) {
        const Move coordinate = parseMove(board, word);
        const Move san = readSan(board, word).move;
        fuzz::expect(coordinate == NoMove || coordinate == san, "both read the same move");
        fuzz::expect(san == NoMove || isLegalMove(board, san), "the move is legal");
        const Move modern = readMove(board, word);
        fuzz::expect(coordinate == NoMove || coordinate == modern, "so does the modern reader");
        fuzz::expect(san == NoMove || modern == NoMove || san == modern, "a name is no other move");
        if (san != NoMove) board.playGameMove(san);
    }
    fuzz::freshBoard();
    playAsModern(board, std::istringstream(std::string(data, size)));
    return 0;
}
