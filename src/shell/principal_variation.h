#pragma once

#include <string>

#include "search/search_listener.h"

namespace brivok {

/// How to write a line: in SAN with move numbers and with the extension in angle brackets, or in
/// coordinate text.
enum class PvStyle { San, Coordinate };

/// The principal variation, extended by up to `iteration` moves from the transposition table. Makes
/// and unmakes the line on the board: see SearchListener for the side effects.
[[nodiscard]] std::string renderPv(const SearchProgress& progress, PvStyle style);

/// "12. " before a white move, "12. ... " before a black one.
[[nodiscard]] std::string moveNumberText(const Board& board);

}  // namespace brivok
