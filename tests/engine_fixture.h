#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json_fwd.hpp>

#include "board/board.h"
#include "shell/base/settings.h"

namespace brivok {

/// Long tests do less when the board verifies itself after each move or the sanitizers are on.
#if defined(__SANITIZE_ADDRESS__) || !defined(NDEBUG)
inline constexpr bool SlowBuild = true;
#else
inline constexpr bool SlowBuild = false;
#endif

/// Every test starts in the state of a fresh UCI process: default settings, empty tables, the start
/// position, and standard input at its end.
class EngineTest : public ::testing::Test {
protected:
    EngineTest();

    Board& board;
};

/// Sets the variant, then the position.
void setPosition(std::string_view fen, Variant variant = Variant::Normal);

/// Plays moves in coordinate text, separated by spaces; false at the first that is not legal.
[[nodiscard]] bool playMoves(Board& board, const std::string& moves);

/// The evasions if the side to move is in check, else all pseudo-legal moves.
[[nodiscard]] std::vector<Move> generatedMoves(Board& board);

/// The legal moves in `generated`.
[[nodiscard]] std::vector<Move> legalMoves(Board& board, const std::vector<Move>& generated);

/// Coordinate texts, separated by spaces.
[[nodiscard]] std::string textOf(const std::vector<Move>& moves);

/// The generated move with this coordinate text; NoMove if there is none.
[[nodiscard]] Move moveNamed(Board& board, std::string_view text);

/// The bytes of all fields of the position, and of the keys.
[[nodiscard]] std::string snapshot(const Board& board);

/// Adds a test failure if a counter, set or key differs from a full recomputation.
void expectConsistent(const Board& board);

[[nodiscard]] std::string dataPath(const std::string& name);
[[nodiscard]] nlohmann::json loadJson(const std::string& name);

/// A number from the environment, to run a test for longer.
[[nodiscard]] std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise);

}  // namespace brivok
