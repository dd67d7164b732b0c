// Every folder above src/platform may include this.
#pragma once

namespace brivok {

/// Notes a line in the log of the run, behind "## ", if one is open: for what lies below the shell
/// and knows no application.
[[gnu::format(printf, 1, 2)]] void Note(const char* format, ...);

}  // namespace brivok
