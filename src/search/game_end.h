#pragma once

#include <cstdint>

#include "board/board.h"

namespace brivok {

/// Why a game is over.
enum class GameOutcome : int {
    None = 0,
    Stalemate = 1,
    BlackMates = 2,
    WhiteMates = 3,
    FiftyMoves = 4,
    Repetition = 5,
    InsufficientMaterial = 6
};

/// More reversible half-moves than this mean a draw.
inline constexpr std::uint32_t FiftyMoveLimit = 100;

/// The first of `Rules`, in that order, by which the position on the board is drawn, or None.
/// Repetition means the third occurrence in the game. Mate takes precedence over these draws; the
/// caller must rule it out.
template <GameOutcome... Rules>
[[nodiscard]] GameOutcome drawnBy(const Board& board) {
    const auto applies = [&board](GameOutcome rule) {
        switch (rule) {
            case GameOutcome::Repetition: return board.countRepetitions(0).inGame >= 3;
            case GameOutcome::FiftyMoves: return board.fiftyCount > FiftyMoveLimit;
            case GameOutcome::InsufficientMaterial: return board.isInsufficientMaterial();
            default: return false;
        }
    };
    GameOutcome outcome = GameOutcome::None;
    static_cast<void>(((applies(Rules) && (outcome = Rules, true)) || ...));
    return outcome;
}

/// The outcome when `sideToMove` has no legal move: mate or stalemate.
[[nodiscard]] constexpr GameOutcome outcomeWithoutMoves(Side sideToMove, bool inCheck) {
    if (!inCheck) return GameOutcome::Stalemate;
    return sideToMove == White ? GameOutcome::BlackMates : GameOutcome::WhiteMates;
}

}  // namespace brivok
