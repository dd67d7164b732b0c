#pragma once

#include <string_view>

#include "board/board.h"
#include "search/search_listener.h"
#include "shell/base/application.h"

namespace brivok {

/// Asks for a suite of positions in EPD form and a time per position, searches each position for
/// that time and counts where the engine's move agrees with the line. The report goes to the screen
/// and is appended to "NAME-results.txt", and the lines that failed to "NAME-notfound.epd", NAME
/// being the suite's name up to its first dot. Leaves the last position on the board. The listener
/// is told of the searches and of the sum of their counters.
void RunEpdTest(Application& app, SearchListener& listener);

/// Whether a move of the position on the board solves the line: with "bm" in it, the line must hold
/// the move in standard algebraic notation; with "am", it must not. The operations are not parsed:
/// the whole line is searched for these texts. A line with neither is never solved.
[[nodiscard]] bool CheckSolution(Board& board, std::string_view line, Move move);

}  // namespace brivok
