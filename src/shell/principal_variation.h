#pragma once

#include <string>

#include "search/search_listener.h"

namespace brivok {

/// How the moves of a line are written: in SAN with move numbers and the continuation in angle
/// brackets, or in coordinate text.
enum class PvStyle { San, Coordinate };

/// The principal variation of the search, continued by up to `iteration` moves of its table. Plays
/// the line on the board and takes it back: see SearchListener for what that leaves behind.
[[nodiscard]] std::string renderPv(const SearchProgress& progress, PvStyle style);

/// "12. " before a move of White, "12. ... " before one of Black.
[[nodiscard]] std::string moveNumberText(const Board& board);

}  // namespace brivok
