// Every folder above src/platform may include this.
#pragma once

#include <string>
#include <string_view>

/// @file
/// What code below the shell can say to the outside without an application: a note in the log, a
/// line on standard output, and the end of the process.
namespace brivok {

/// Writes a line to the log of the run, behind "## ", if a log is open.
[[gnu::format(printf, 1, 2)]] void Note(const char* format, ...);

/// Writes to standard output only, for the few texts that never reach the log. What cannot be
/// written is lost, and the rest of the text with it.
void PrintUnlogged(std::string_view text);

/// The usual end of the process: deletes the handler, which may still be on the call stack, closes
/// the log and ends with `code` (0 for "quit", 1 for every failure). Where a test's platform throws
/// instead of ending, nothing on the way up may touch the handler or the application.
[[noreturn]] void ExitProgram(int code);

/// Ends the process on the spot, with code 1, for damaged data: prints "*** " and the text and
/// flushes all streams. The log gets no closing line.
[[noreturn]] void EndAtOnce(const std::string& text);

}  // namespace brivok
