// All folders above src/platform may include this.
#pragma once

#include <string>
#include <string_view>

/// @file
/// What code without an Application can do: log a note, print a line, end the process.
namespace brivok {

/// Writes a line, prefixed with "## ", to the log if one is open.
[[gnu::format(printf, 1, 2)]] void Note(const char* format, ...);

/// Writes to standard output only, for the few texts that are never logged. If a write fails, the
/// rest of the text is lost.
void PrintUnlogged(std::string_view text);

/// The usual way to end the process: deletes the handler, which may still be on the call stack,
/// closes the log and exits with `code` (0 for "quit", 1 for every failure). If a test's platform
/// throws instead of exiting, nothing up the stack may touch the handler or the application.
[[noreturn]] void ExitProgram(int code);

/// Ends the process at once with code 1, for damaged data: prints "*** " and the text, and flushes
/// all streams. The log gets no closing line.
[[noreturn]] void EndAtOnce(const std::string& text);

}  // namespace brivok
