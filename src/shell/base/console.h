// Every folder above src/platform may include this.
#pragma once

#include <string_view>

#include "shell/base/application.h"
#include "shell/base/protocol_handler.h"

namespace brivok {

/// Writes to standard output, at once, and to the log if one is open.
[[gnu::format(printf, 2, 3)]] void Print(Application& app, const char* format, ...);

/// Writes to the log only, behind "## ".
[[gnu::format(printf, 2, 3)]] void LogOnly(Application& app, const char* format, ...);

/// Reads the next line, blocking, and logs it. `line` is valid until the next read and holds its
/// newline, unless the line was cut at MaxLineLength or the input ended within it. Carriage
/// returns before the newline are dropped. False at the end of the input.
[[nodiscard]] bool ReadLine(Application& app, std::string_view& line);

/// What a look at the input without blocking has found.
enum class Input {
    Nothing,  ///< no whole line waits
    Line,     ///< a line, or MaxLineLength bytes of one, can be read without blocking
    Ended     ///< the input is closed and everything in it has been read
};
/// Looks at the input without blocking.
[[nodiscard]] Input InputWaiting(Application& app);

/// Hands one waiting line, if there is one, to the handler in force. Without a handler nothing is
/// read.
Input PollInput(Application& app);

/// The read loop of handlers that act on lines alone. The end of the input counts as "quit".
void RunReadLoop(ProtocolHandler& handler);

}  // namespace brivok
