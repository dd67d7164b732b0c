#include <algorithm>
#include <cstdio>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "../common/app_error.h"
#include "book/opening_book.h"
#include "book_file.h"
#include "commands.h"
#include "movegen/san.h"
#include "position.h"

namespace brivok {

namespace {

/// Sample size for estimating how often a move is chosen: accurate to a few tenths of a percent.
constexpr int Choices = 100'000;
constexpr unsigned ChoiceSeed = 1;  ///< fixed, so that the same book always gives the same output

/// A book move for a position.
struct ShownMove {
    BookCandidate candidate;
    int chosen = 0;  ///< out of Choices
};

OpeningBook openBook(const std::string& name) {
    (void)openBookFile(name);  // for its error messages
    OpeningBook book(name);
    if (!book.Open()) fail(name, "cannot be opened");
    return book;
}

/// Lets the engine choose many times.
std::vector<ShownMove> weigh(const std::vector<BookCandidate>& candidates) {
    std::mt19937 generator(ChoiceSeed);
    std::uniform_int_distribution<int> distribution(0, MaxBookRandom);
    std::vector<ShownMove> moves;
    moves.reserve(candidates.size());
    for (const BookCandidate& candidate : candidates) moves.push_back({candidate, 0});
    for (int i = 0; i < Choices && !moves.empty(); ++i) {
        const Move choice = chooseBookMove(candidates, [&] { return distribution(generator); });
        for (ShownMove& move : moves) move.chosen += move.candidate.move == choice ? 1 : 0;
    }
    return moves;
}

void printTable(const std::vector<ShownMove>& moves) {
    std::printf("%-10s%10s%10s%10s%10s%10s%9s\n", "move", "White", "Black", "draws", "games",
                "score", "chance");
    for (const ShownMove& shown : moves) {
        const BookRecord& record = shown.candidate.record;
        const std::string move = moveToSan(theBoard, shown.candidate.move) + " " +
                                 std::string(AnnotationText(record.annotation));
        std::printf("%-10s%10u%10u%10u%10llu%10lld%7.1f %%\n", move.c_str(), record.whiteWins,
                    record.blackWins, record.draws,
                    static_cast<unsigned long long>(gamesOf(record)),
                    static_cast<long long>(shown.candidate.score), 100.0 * shown.chosen / Choices);
    }
}

}  // namespace

void showBook(const ShowOptions& options) {
    OpeningBook book = openBook(options.book);
    theBoard.NewGame();
    if (!options.fen.empty()) setPositionOrThrow(theBoard, options.fen);
    playLine(theBoard, options.moves);

    bool thirdOccurrence = false;
    std::vector<ShownMove> moves = weigh(findBookCandidates(theBoard, book, thirdOccurrence));
    std::ranges::stable_sort(moves, std::ranges::greater(),
                             [](const ShownMove& move) { return move.candidate.score; });
    if (thirdOccurrence) {
        std::puts("A move could repeat a position for the third time: the engine leaves the book.");
    } else if (moves.empty()) {
        std::puts("The book has no move for this position.");
    } else {
        printTable(moves);
    }
}

void lookUpPositions(const std::string& bookName) {
    OpeningBook book = openBook(bookName);
    for (std::string line; std::getline(std::cin, line);) {
        if (line.ends_with('\r')) line.pop_back();
        setPositionOrThrow(theBoard, line);
        BookRecord record;
        if (!book.Find(theBoard, record)) record = {};
        const std::string glyph(AnnotationText(record.annotation));
        std::printf("%016llx %u %u %u %s\n", static_cast<unsigned long long>(theBoard.hashKey),
                    record.whiteWins, record.blackWins, record.draws,
                    glyph.empty() ? "-" : glyph.c_str());
    }
}

}  // namespace brivok
