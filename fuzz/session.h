#pragma once

#include <string_view>

namespace brivok::fuzz {

/// The start position and the default settings, with all that a board needs. Where the engine would
/// end the process it throws ProcessEnded.
void freshBoard();

/// Starts a fresh engine as main() does and lets it read the lines until they end or make it end. A
/// search meets one of them every few nodes; an empty line lets it go on.
void runEngine(std::string_view lines);

}  // namespace brivok::fuzz
