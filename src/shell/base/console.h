// All folders above src/platform may include this.
#pragma once

#include <string_view>

#include "shell/base/application.h"
#include "shell/base/protocol_handler.h"

namespace brivok {

/// Writes to standard output, unbuffered, and to the log if one is open.
[[gnu::format(printf, 2, 3)]] void Print(Application& app, const char* format, ...);

/// Writes to the log only, prefixed with "## ".
[[gnu::format(printf, 2, 3)]] void LogOnly(Application& app, const char* format, ...);

/// Reads the next line, blocking, and logs it. `line` stays valid until the next read and includes
/// the newline, unless it was cut at MaxLineLength or the input ended within it. Carriage returns
/// before the newline are dropped. False at the end of the input.
[[nodiscard]] bool ReadLine(Application& app, std::string_view& line);

/// Result of a non-blocking look at the input.
enum class Input {
    Nothing,  ///< no complete line yet
    Line,     ///< a line, or MaxLineLength bytes of one, can be read without blocking
    Ended     ///< the input is closed and has been read completely
};
/// Looks at the input without blocking.
[[nodiscard]] Input InputWaiting(Application& app);

/// Passes one waiting line, if any, to the current handler. Reads nothing if there is no handler.
Input PollInput(Application& app);

/// The read loop of handlers that only react to lines. The end of the input counts as "quit".
void RunReadLoop(ProtocolHandler& handler);

}  // namespace brivok
