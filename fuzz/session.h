#pragma once

#include <string>

namespace brivok::fuzz {

/// The start position and the default settings, with all that a board needs.
void freshBoard();

/// Starts a fresh engine as main() does and lets it read the lines until they end or make it end.
void runEngine(std::string lines);

}  // namespace brivok::fuzz
