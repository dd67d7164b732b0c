#include <algorithm>

#include "board/strict_fen.h"
#include "search/searcher.h"
#include "shell/base/settings.h"
#include "shell/base/words.h"
#include "shell/modern/interface_moves.h"
#include "shell/modern/modern_options.h"
#include "shell/modern/modern_winboard_handler.h"
#include "shell/modern/time_words.h"

namespace brivok {

namespace {

struct NamedVariant {
    std::string_view name;
    Variant variant;
};
constexpr NamedVariant Variants[] = {{"normal", Variant::Normal},
                                     {"fischerandom", Variant::Fischerandom},
                                     {"nocastle", Variant::NoCastle}};

/// A time less the reserve that the option "Move Overhead" asks for beyond its default, which
/// budgets leave in any case.
std::uint32_t lessOverhead(std::uint32_t time) {
    constexpr int MillisecondsPerCentisecond = 10;
    const int more = modernSettings.moveOverhead - ModernSettings{}.moveOverhead;
    const auto reserve = static_cast<std::uint32_t>(std::max(more, 0) / MillisecondsPerCentisecond);
    return time > reserve ? time - reserve : std::min(time, 1U);
}

/// Whether this many moves can be taken back.
bool hasHistory(const Board& board, std::uint32_t moves) {
    return board.ply >= moves && board.undo[board.ply - moves].move != NoMove;
}

}  // namespace

// --- Clocks ---------------------------------------------------------------------------------

/// Interfaces send clocks in centiseconds, and negative ones once the time has run out.
bool ModernWinBoardHandler::setClock(std::uint32_t& clock, const Line& line) {
    std::string word = line.rest(1);
    const bool overdrawn = word.starts_with('-');
    const auto left = readNumber(overdrawn ? word.substr(1) : word, LongestTime);
    if (!left) {
        refuse(line, "not a time in hundredths of a second");
        return false;
    }
    clock = overdrawn ? 0 : *left;
    // A kept time control comes first.
    if (!kept.empty()) keep(*this, line);
    return true;
}

void ModernWinBoardHandler::setOwnClock(const Line& line) {
    std::uint32_t& clock = timeControl.ownTime;
    if (setClock(clock, line)) clock = lessOverhead(clock);
}

void ModernWinBoardHandler::setLevel(const Line& line) {
    const std::string* moves = line.word(1);
    const std::string* base = line.word(2);
    const std::string* increment = line.word(3);
    const bool complete = moves != nullptr && base != nullptr && increment != nullptr;
    const auto clocks = complete ? readLevel(*moves, *base, *increment) : std::nullopt;
    if (!clocks) return refuse(line, "not a time control");
    beginControl(*clocks);
}

void ModernWinBoardHandler::setTimePerMove(const Line& line) {
    const auto time = readTime(line.rest(1), CentisecondsPerSecond);
    if (!time) return refuse(line, "not a time in seconds");
    TimeControl clocks;
    clocks.setFixedTime(std::max(lessOverhead(*time), 1U));
    beginControl(clocks);
}

/// 0 lifts the limit, and so does a depth that no search exceeds.
void ModernWinBoardHandler::setDepth(const Line& line) {
    const auto depth = readNumber(line.rest(1), DeepestIteration);
    if (!depth) return refuse(line, "not a depth");
    lastIteration = *depth == 0 ? NoFixedDepth : std::min(static_cast<int>(*depth), NoFixedDepth);
}

void ModernWinBoardHandler::beginControl(const TimeControl& clocks) {
    control = clocks;
    const std::uint32_t startPly = timeControl.startPly;
    timeControl = clocks;
    timeControl.startPly = startPly;
}

// --- Positions ------------------------------------------------------------------------------

void ModernWinBoardHandler::startNewGame() {
    settings.variant = usualVariant.value_or(settings.variant);
    usualVariant.reset();
    newGame();
    timeControl = control;
    lastIteration = NoFixedDepth;
    reopenGame();
}

/// The rules hold for one game.
void ModernWinBoardHandler::startVariant(const Line& line) {
    const std::string name = line.rest(1);
    const auto* const known = std::ranges::find(Variants, name, &NamedVariant::name);
    if (known == std::end(Variants)) return refuse(line, "unsupported variant");
    usualVariant = usualVariant.value_or(settings.variant);
    settings.variant = known->variant;
    TimeControl clocks = timeControl;
    theBoard.NewGame();
    timeControl = clocks;
    timeControl.startPly = 0;
    resignCounter = 0;
    reopenGame();
}

void ModernWinBoardHandler::setUpBoard(const Line& line) {
    const TimeControl clocks = timeControl;
    const std::string fault = setUpPosition(theBoard, line.rest(1));
    timeControl = clocks;
    if (!fault.empty()) return refuse(line, fault);
    timeControl.startPly = theBoard.gamePly();
    resignCounter = 0;
    forceMode = true;
    reopenGame();
}

void ModernWinBoardHandler::takeBackMoves(const Line& line, std::uint32_t moves) {
    if (!hasHistory(theBoard, moves)) return refuse(line, "no move to take back");
    const Side mover = sideOf(movePiece(theBoard.undo[theBoard.ply - moves].move));
    takeBack(static_cast<int>(moves));
    theBoard.giveMoveTo(mover);  // "white" or "black" may have changed the side since
    reopenGame();
}

void ModernWinBoardHandler::playMove(const std::string& text) {
    const Move move = readMove(theBoard, text);
    if (move == NoMove) return refuseMove(text);
    theBoard.playGameMove(move);
    positionChanged();
}

/// The engine plays the other side.
void ModernWinBoardHandler::giveMoveTo(const Line& line, Side side) {
    const Side before = theBoard.sideToMove;
    theBoard.giveMoveTo(side);
    if (theBoard.moverInCheck()) {
        theBoard.giveMoveTo(before);
        return refuse(line, "the king could be taken");
    }
    engineSide = opposite(side);
    analysing = false;
    positionChanged();
}

void ModernWinBoardHandler::play(Side side) {
    forceMode = false;
    engineSide = side;
    analysing = false;
    reopenGame();
}

/// What was found in another position does not count any more.
void ModernWinBoardHandler::positionChanged() {
    theSearcher.ponderMove = NoMove;
    analysisRests = false;
}

/// The game goes on, whatever was claimed. A resignation taken back is not repeated at once.
void ModernWinBoardHandler::reopenGame() {
    if (gameOver) resignCounter = 0;
    gameOver = false;
    positionChanged();
}

}  // namespace brivok
