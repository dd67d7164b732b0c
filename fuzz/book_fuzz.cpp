// A libFuzzer target: whatever a book file contains, the engine plays only legal moves from it, and
// the book builder reads it up to its first fault. The input is used twice: as a file, and as
// records for the positions after each first move, in order.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "../apps/book/book_file.h"
#include "../apps/common/app_error.h"
#include "expect.h"
#include "folder.h"
#include "movegen/legal_moves.h"
#include "session.h"

namespace brivok {
namespace {

constexpr char Name[] = "libro.bin";

/// The keys of the positions after each first move, in rising order.
std::vector<std::uint64_t> keysOfMoves() {
    std::vector<std::uint64_t> keys;
    MoveList moves;
    generateForPosition(theBoard, moves);
    for (int i = 0, count = theBoard.moveCount; i < count; ++i) {
        theBoard.makeMove(moves[i]);
        keys.push_back(theBoard.hashKey);
        theBoard.unmakeMove();
    }
    std::ranges::sort(keys);
    return keys;
}

void repairKeys(std::string& book) {
    static const std::vector<std::uint64_t> keys = keysOfMoves();
    const std::size_t records = std::min(book.size() / BookRecord::Bytes, keys.size());
    for (std::size_t i = 0; i < records; ++i) {
        for (std::size_t byte = 0; byte < sizeof keys[i]; ++byte) {
            book[i * BookRecord::Bytes + byte] = static_cast<char>(keys[i] >> (8 * byte));
        }
    }
}

void useBook(std::string_view book) try {
    fuzz::writeFile(Name, book);
    const Move move = OpeningBook(Name).SelectMove(theBoard);
    fuzz::expect(move == NoMove || isLegalMove(theBoard, move), "the move is legal");
    BookReader reader(Name);
    for (BookRecord record; reader.next(record);) {
    }
} catch (const AppError&) {
}

}  // namespace
}  // namespace brivok

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    using namespace brivok;
    fuzz::freshBoard();
    std::string book(data, size);
    useBook(book);
    repairKeys(book);
    useBook(book);
    return 0;
}
