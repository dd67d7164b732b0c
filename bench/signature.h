#pragma once

#include <cstdint>
#include <span>

#include "shell/base/settings.h"

/// The deterministic signature: a fixed set of positions, each searched to a fixed depth with fresh
/// tables. The total of their nodes is kept here. Whoever changes it changes the search, the
/// evaluation or the order of moves, and has to know why.
namespace brivok {

inline constexpr int SignatureDepth = 6;
inline constexpr std::uint64_t SignatureNodes = 4410622;

/// A position, and the rules that it is played by.
struct TestPosition {
    Variant variant;
    const char* fen;
};

/// The positions, normal chess first. All measurements take theirs from here.
[[nodiscard]] std::span<const TestPosition> signaturePositions();

/// Sets up the position with fresh tables.
void preparePosition(const TestPosition& position);

/// Searches it, in silence, up to and with iteration `depth`. Returns the nodes.
[[nodiscard]] std::uint32_t searchNodes(int depth);

}  // namespace brivok
