#include <utility>

#include "movegen/legal_moves.h"
#include "search/fallback_move.h"
#include "search/searcher.h"
#include "shell/modern/modern_options.h"
#include "shell/modern/modern_winboard_handler.h"

namespace brivok {

bool ModernWinBoardHandler::wantsSearch() const {
    return analysing ? !analysisRests : WinBoardHandler::wantsSearch();
}

/// The limits come from the game alone: nothing of an earlier search counts.
SearchRequest ModernWinBoardHandler::nextSearch() {
    if (analysing) theSearcher.searchMode = SearchMode::Analysing;
    theSearcher.gameOutcome = GameOutcome::None;
    SearchRequest request = WinBoardHandler::nextSearch();
    request.lines = modernSettings.lines;
    request.searchesOnlyMove = analysing;
    request.maxIteration = analysing ? NoFixedDepth : lastIteration;
    request.clockCounts = true;
    request.nodeLimit = 0;
    if (request.mode == SearchMode::Pondering) *beforePondering = theBoard;
    shown.begin();
    return request;
}

bool ModernWinBoardHandler::useResult(SearchMode mode, Move move) {
    Searcher& searcher = theSearcher;
    bool mayGoOn = true;
    if (mode == SearchMode::Analysing) analysisRests = kept.empty();
    if (givenUp) {
        searcher.gameOutcome = GameOutcome::None;
        searcher.ponderMove = NoMove;
    } else {
        const bool owesMove = mode == SearchMode::Thinking && move == NoMove &&
                              searcher.gameOutcome == GameOutcome::None;
        if (owesMove) move = fallbackMove(theBoard, searcher.progress().table);
        mayGoOn = WinBoardHandler::useResult(mode, move);
    }
    givenUp = false;
    return obeyKept() || mayGoOn;
}

/// The board alone decides, not the score. No legal move comes before a draw.
GameOutcome ModernWinBoardHandler::outcomeToClaim() {
    if (countLegalMoves(theBoard) == 0) {
        return outcomeWithoutMoves(theBoard.sideToMove, theBoard.inCheck());
    }
    return drawnBy<GameOutcome::Repetition, GameOutcome::FiftyMoves,
                   GameOutcome::InsufficientMaterial>(theBoard);
}

/// False if nothing was kept.
bool ModernWinBoardHandler::obeyKept() {
    const std::vector<Line> lines = std::exchange(kept, {});
    for (const Line& line : lines) obey(line);
    return !lines.empty();
}

void ModernWinBoardHandler::startAnalysis() {
    analysing = true;
    analysisRests = false;
}

/// The engine then waits, like after "force".
void ModernWinBoardHandler::endAnalysis() {
    if (!analysing) return;
    analysing = false;
    forceMode = true;
    theSearcher.stopSearch = true;
}

}  // namespace brivok
