// A libFuzzer target: the engine and the book builder read any word as the same legal move, or both
// reject it. The first line, unless empty, sets up the position; the words of the other lines are
// played.

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

#include "board/coordinate.h"
#include "expect.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "movegen/san.h"
#include "session.h"

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
        if (san != NoMove) board.playGameMove(san);
    }
    return 0;
}
