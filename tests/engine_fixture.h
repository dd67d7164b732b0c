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

/// The board verifies itself after every move, or the sanitizers are at work: long tests do less.
#if defined(__SANITIZE_ADDRESS__) || !defined(NDEBUG)
inline constexpr bool SlowBuild = true;
#else
inline constexpr bool SlowBuild = false;
#endif

/// Every test starts with the state of a fresh process that speaks UCI: default settings, empty
/// tables, the start position, and a standard input that is at its end.
class EngineTest : public ::testing::Test {
protected:
    EngineTest();

    Board& board;
};

/// Sets the variant, then the position.
void setPosition(std::string_view fen, Variant variant = Variant::Normal);

/// Plays moves in coordinate text, separated by spaces; false at the first that cannot be played.
[[nodiscard]] bool playMoves(Board& board, const std::string& moves);

/// The evasions of a side in check, else all pseudo-legal moves.
[[nodiscard]] std::vector<Move> generatedMoves(Board& board);

/// The moves of `generated` that are legal.
[[nodiscard]] std::vector<Move> legalMoves(Board& board, const std::vector<Move>& generated);

/// Coordinate texts, separated by spaces.
[[nodiscard]] std::string textOf(const std::vector<Move>& moves);

/// The generated move with this coordinate text; 0 if there is none.
[[nodiscard]] Move moveNamed(Board& board, std::string_view text);

/// Bytes of all fields that make up the position and of the keys.
[[nodiscard]] std::string snapshot(const Board& board);

/// Adds a test failure if a counter, set or key differs from its full recomputation.
void expectConsistent(const Board& board);

/// A file of the folder of test data.
[[nodiscard]] std::string dataPath(const std::string& name);
[[nodiscard]] nlohmann::json loadJson(const std::string& name);

/// A number from the environment, for longer runs of the same test.
[[nodiscard]] std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise);

}  // namespace brivok
