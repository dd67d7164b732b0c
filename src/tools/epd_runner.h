#pragma once

#include <string_view>

#include "board/board.h"
#include "search/search_listener.h"
#include "shell/base/application.h"

namespace brivok {

/// Asks for an EPD suite and a time per position, searches each position for that time and counts
/// how often the engine's move agrees with the line. Prints a report and appends it to
/// "NAME-results.txt"; appends failed lines to "NAME-notfound.epd". NAME is the suite's name up to
/// its first dot. The last position stays on the board. The listener is told of the searches and of
/// the sum of their counters.
void RunEpdTest(Application& app, SearchListener& listener);

/// Whether a move of the position on the board solves the line. If the line contains "bm" it must
/// contain the move in standard algebraic notation; if it contains "am" it must not. The whole line
/// is searched for these texts; its operations are not parsed. A line with neither is never solved.
[[nodiscard]] bool CheckSolution(Board& board, std::string_view line, Move move);

}  // namespace brivok
