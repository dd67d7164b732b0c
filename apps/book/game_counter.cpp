#include "game_counter.h"

#include "movegen/san.h"

namespace brivok {

namespace {

std::string describe(const PgnMove& move, std::size_t ply, std::string_view fault) {
    const char* const dots = ply % 2 == 0 ? ". " : "... ";
    return std::string(fault) + ": " + std::to_string(ply / 2 + 1) + dots +
           std::string(move.text());
}

}  // namespace

GameCounter::GameCounter(Board& playedOn, const CountOptions& countOptions)
    : board(playedOn), options(countOptions) {
    static_assert(MaxBookPlies <= UndoRecords - UndoReserve);
    board.NewGame();
}

Verdict GameCounter::observe(PgnGame& game, std::vector<Observation>& observations) {
    observations.clear();
    const auto tooLow = [this](std::optional<int> elo) { return elo && *elo < options.minElo; };
    if (game.otherStart) return Verdict::OtherStart;
    if (!game.fault.empty()) return Verdict::Broken;
    if (game.result == GameResult::Unknown) return Verdict::NoResult;
    if (tooLow(game.whiteElo) || tooLow(game.blackElo)) return Verdict::LowRating;
    if (game.moves.empty()) return Verdict::NoMoves;

    const bool played = play(game, observations);
    while (board.ply > 0) board.unmakeMove();
    if (!played) observations.clear();
    return played ? Verdict::Counted : Verdict::Broken;
}

bool GameCounter::play(PgnGame& game, std::vector<Observation>& observations) {
    for (std::size_t ply = 0; ply < game.moves.size() && ply < options.plies; ++ply) {
        const PgnMove& text = game.moves[ply];
        const SanReading reading = readSan(board, text.text());
        if (reading.move == NoMove) {
            game.fault = describe(text, ply, reading.fault);
            game.faultLine = text.line;
            return false;
        }
        const Side mover = board.sideToMove;
        board.makeMove(reading.move);
        const bool wanted = mover == White ? options.whiteMoves : options.blackMoves;
        // The first position has also occurred once before any move.
        const int before = board.hashKey == board.undo[0].hashKey ? 1 : 0;
        if (!wanted || board.countRepetitions(0).inGame > 1 + before) continue;
        observations.emplace_back(board.hashKey, mover, game.result, text.annotation);
    }
    return true;
}

}  // namespace brivok
