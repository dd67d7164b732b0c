#include "shell/modern/suggestions.h"

#include "book/opening_book.h"
#include "movegen/legal_moves.h"
#include "movegen/san.h"
#include "search/searcher.h"
#include "shell/base/settings.h"

namespace brivok {

namespace {

constexpr int ShortSearch = 6;  ///< iterations

Move moveFromSearch() {
    Searcher& searcher = theSearcher;
    SearchListener silent;
    const Move move = searcher.think({.maxIteration = ShortSearch}, silent);
    // A search for advice leaves nothing to the game.
    searcher.searchMode = SearchMode::Idle;
    searcher.gameOutcome = GameOutcome::None;
    searcher.ponderMove = NoMove;
    return move;
}

}  // namespace

std::string suggestMove() {
    Move move = theSearcher.progress().table.bestMove(theBoard);
    if (!isLegalMove(theBoard, move)) move = moveFromSearch();
    return move == NoMove ? "" : moveToSan(theBoard, move);
}

std::string bookPage(Board& board) {
    OpeningBook book(settings.bookFileName);
    if (!book.Open()) return " There is no opening book.\n\n";
    bool thirdOccurrence = false;
    std::string page;
    for (const auto& [move, score, record] : findBookCandidates(board, book, thirdOccurrence)) {
        page += ' ';
        page.append(moveToSan(board, move)).append(AnnotationText(record.annotation));
        page.append(" +").append(std::to_string(record.whiteWins));
        page.append(" -").append(std::to_string(record.blackWins));
        page.append(" =").append(std::to_string(record.draws)).append("\n");
    }
    if (page.empty()) page = " The book does not know this position.\n";
    return page.append("\n");
}

}  // namespace brivok
