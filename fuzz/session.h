#pragma once

#include <string_view>

namespace brivok::fuzz {

/// Sets up the start position, the default settings and everything a board requires. Where the
/// engine would end the process it throws ProcessEnded.
void freshBoard();

/// Starts a fresh engine as main() does and lets it read the lines until they end or stop it; then
/// once more with the modern interface. A search reads one every few nodes; an empty line lets it
/// continue.
void runEngine(std::string_view lines);

}  // namespace brivok::fuzz
