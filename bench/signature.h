#pragma once

#include <cstdint>
#include <span>

#include "shell/base/settings.h"

/// The deterministic signature: a fixed set of positions, each searched to a fixed depth with fresh
/// tables, and the known total of nodes. A change of the total means a change of the search, the
/// evaluation or the move order, which must be understood.
namespace brivok {

inline constexpr int SignatureDepth = 6;
inline constexpr std::uint64_t SignatureNodes = 4410622;

/// A position and its variant.
struct TestPosition {
    Variant variant;
    const char* fen;
};

/// The positions, normal chess first. All measurements use them.
[[nodiscard]] std::span<const TestPosition> signaturePositions();

/// Sets up the position with fresh tables.
void preparePosition(const TestPosition& position);

/// Searches the position silently, up to and including iteration `depth`. Returns the nodes.
[[nodiscard]] std::uint32_t searchNodes(int depth);

}  // namespace brivok
