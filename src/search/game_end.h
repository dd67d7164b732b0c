#pragma once

#include <cstdint>

#include "board/board.h"

namespace brivok {

/// Why a game has ended.
enum class GameOutcome : int {
    None = 0,
    Stalemate = 1,
    BlackMates = 2,
    WhiteMates = 3,
    FiftyMoves = 4,
    Repetition = 5,
    InsufficientMaterial = 6
};

/// More reversible half-moves than this are a draw.
inline constexpr std::uint32_t FiftyMoveLimit = 100;

/// The first of the rules, in their order, by which the position on the board is drawn; None if it
/// is by none of them. Repetition: the third occurrence in the game. Such a draw needs no mate to
/// be ruled out: that is the caller's to do.
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
