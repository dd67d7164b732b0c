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

/// The engine resigns when more of its moves than this have been hopeless.
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
    bool mayStart = true;  // a search that came to nothing is not begun again before the next line
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

/// An analysis is wanted also of a game that is over.
bool WinBoardHandler::wantsSearch() const {
    if (theSearcher.searchMode == SearchMode::Analysing) return true;
    if (forceMode || gameOver) return false;
    if (theBoard.sideToMove == engineSide) return true;
    return theSearcher.ponderEnabled && theSearcher.ponderMove != NoMove && theBoard.ply != 0;
}

/// What the state of the game asks for. A fixed depth and a limit of nodes hold until a command
/// lifts them.
SearchRequest WinBoardHandler::nextSearch() {
    Searcher& searcher = theSearcher;
    SearchRequest request = searcher.standingRequest();
    request.keepsGame = true;
    if (searcher.searchMode == SearchMode::Analysing) {
        LogOnly(app, "Starting analysis\n");
        request.mode = SearchMode::Analysing;
        // A game that is over is analysed like any other.
        searcher.gameOutcome = GameOutcome::None;
    } else if (searcher.ponderEnabled && theBoard.sideToMove != engineSide) {
        request.mode = SearchMode::Pondering;
        LogOnly(app, "Starting pondering -> Hint: %s\n",
                moveToCoordinate(searcher.ponderMove).c_str());
        searcher.hashPonder = theBoard.hashKey;
    }
    return request;
}

/// Runs one search and acts on its result. False when it came to nothing: neither a move nor the
/// end of the game.
bool WinBoardHandler::runSearch() {
    Searcher& searcher = theSearcher;
    const Move move = searcher.think(nextSearch(), listener);

    // The mode is read now: a ponder hit has changed it during the call.
    const SearchMode mode = searcher.searchMode;
    searcher.searchMode = SearchMode::Idle;
    if (mode == SearchMode::Pondering) {
        endPondering();
    } else if (mode == SearchMode::Analysing) {
        // What the analysis has seen of the end of the game, and of a reply, is not of the game.
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

/// A draw by rule replaces whatever result the search has left.
void WinBoardHandler::testGameEnd() {
    GameOutcome& outcome = theSearcher.gameOutcome;
    const GameOutcome draw = drawnBy<GameOutcome::Repetition, GameOutcome::FiftyMoves,
                                     GameOutcome::InsufficientMaterial>(theBoard);
    if (draw != GameOutcome::None) {
        outcome = draw;
    } else if (outcome == GameOutcome::None) {
        if (resignCounter <= PatientMoves) return;
        gameOver = true;
        Print(app, engineSide == White ? "0-1 {White resigns}\n" : "1-0 {Black resigns}\n");
        return;
    }
    gameOver = true;
    Print(app, "%s", resultLine(outcome));
}

/// The guess is taken back, and a move that came meanwhile is made.
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
