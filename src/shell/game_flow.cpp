#include "board/board.h"
#include "board/coordinate.h"
#include "movegen/legal_moves.h"
#include "movegen/move_text.h"
#include "search/searcher.h"
#include "search/time_control.h"
#include "shell/base/console.h"
#include "shell/base/report.h"
#include "shell/base/settings.h"
#include "shell/winboard_handler.h"

namespace brivok {

namespace {

/// The engine resigns after more hopeless moves than this.
constexpr int PatientMoves = 5;

const char* resultLine(GameOutcome outcome) {
    switch (outcome) {
        case GameOutcome::Stalemate: return "1/2-1/2 {Stalemate}\n";
        case GameOutcome::BlackMates: return "0-1 {Black mates}\n";
        case GameOutcome::WhiteMates: return "1-0 {White mates}\n";
        case GameOutcome::FiftyMoves: return "1/2-1/2 {Fifty moves rule}\n";
        case GameOutcome::Repetition: return "1/2-1/2 {Three fold repetition}\n";
        case GameOutcome::InsufficientMaterial: return "1/2-1/2 {Insufficient material}\n";
        case GameOutcome::None: break;
    }
    return "";
}

}  // namespace

void WinBoardHandler::Run() {
    std::string_view line;
    bool mayStart = true;  // after a search without result, wait for the next line
    while (!done) {
        if (mayStart && wantsSearch()) {
            mayStart = runSearch();
        } else if (ReadLine(app, line)) {
            ProcessCommand(line);
            mayStart = true;
        } else {
            ExitProgram(0);
        }
    }
}

/// Analysis is possible even when the game is over.
bool WinBoardHandler::wantsSearch() const {
    if (theSearcher.searchMode == SearchMode::Analysing) return true;
    if (forceMode || gameOver) return false;
    if (theBoard.sideToMove == engineSide) return true;
    return theSearcher.ponderEnabled && theSearcher.ponderMove != NoMove && theBoard.ply != 0;
}

/// The search that the state of the game calls for. Fixed depth and node limit persist until a
/// command lifts them.
SearchRequest WinBoardHandler::nextSearch() {
    Searcher& searcher = theSearcher;
    SearchRequest request = searcher.standingRequest();
    request.keepsGame = true;
    if (searcher.searchMode == SearchMode::Analysing) {
        LogOnly(app, "Starting analysis\n");
        request.mode = SearchMode::Analysing;
        // A finished game is analysed like any other.
        searcher.gameOutcome = GameOutcome::None;
    } else if (searcher.ponderEnabled && theBoard.sideToMove != engineSide) {
        request.mode = SearchMode::Pondering;
        LogOnly(app, "Starting pondering -> Hint: %s\n",
                moveToCoordinate(searcher.ponderMove).c_str());
        searcher.hashPonder = theBoard.hashKey;
    }
    return request;
}

/// Runs one search and acts on the result. False if it yielded neither a move nor the end of the
/// game.
bool WinBoardHandler::runSearch() {
    const Move move = theSearcher.think(nextSearch(), searchListener());

    // Read now, because a ponder hit may have changed it during the call.
    const SearchMode mode = theSearcher.searchMode;
    theSearcher.searchMode = SearchMode::Idle;
    return useResult(mode, move);
}

bool WinBoardHandler::useResult(SearchMode mode, Move move) {
    Searcher& searcher = theSearcher;
    if (mode == SearchMode::Pondering) {
        endPondering();
    } else if (mode == SearchMode::Analysing) {
        // What analysis found, the end of a game or a reply, does not belong to the actual game.
        searcher.gameOutcome = GameOutcome::None;
        searcher.ponderMove = NoMove;
    } else if (move == NoMove && searcher.gameOutcome == GameOutcome::None) {
        return false;
    } else {
        playEngineMove(move);
        testGameEnd();
    }
    return true;
}

void WinBoardHandler::playEngineMove(Move move) {
    if (move == NoMove) return;
    Print(app, "\nmove %s\n\n", moveToCoordinate(move).c_str());
    theBoard.playGameMove(move);
    if (settings.resignEnabled && theSearcher.ShouldCountResign()) {
        ++resignCounter;
        LogOnly(app, "Increased resign counter (%d)\n", theSearcher.iterationScore);
    }
}

/// A draw by rule replaces any result left by the search.
GameOutcome WinBoardHandler::outcomeToClaim() {
    const GameOutcome draw = drawnBy<GameOutcome::Repetition, GameOutcome::FiftyMoves,
                                     GameOutcome::InsufficientMaterial>(theBoard);
    return draw != GameOutcome::None ? draw : theSearcher.gameOutcome;
}

void WinBoardHandler::testGameEnd() {
    const GameOutcome outcome = outcomeToClaim();
    theSearcher.gameOutcome = outcome;
    if (outcome == GameOutcome::None) {
        if (resignCounter <= PatientMoves) return;
        gameOver = true;
        Print(app, engineSide == White ? "0-1 {White resigns}\n" : "1-0 {Black resigns}\n");
        return;
    }
    gameOver = true;
    Print(app, "%s", resultLine(outcome));
}

/// Takes back the guessed move and makes the move that arrived meanwhile, if any.
void WinBoardHandler::endPondering() {
    theSearcher.ponderMove = NoMove;
    if (theBoard.hashKey != theSearcher.hashPonder) theBoard.unmakeMove();
    if (theBoard.hashKey != theSearcher.hashPonder) LogOnly(app, "Problem with hashPonder\n");
    LogOnly(app, "strMovDuranteBusqueda: %s\n", strMovDuranteBusqueda.c_str());
    if (strMovDuranteBusqueda.empty()) return;
    const Move move = parseMove(theBoard, strMovDuranteBusqueda);
    if (isLegalMove(theBoard, move)) {
        theBoard.playGameMove(move);
    } else {
        LogOnly(app, "Illegal move (ponder): %s\n", strMovDuranteBusqueda.c_str());
    }
    strMovDuranteBusqueda.clear();
}

}  // namespace brivok
