#pragma once

#include <string>
#include <vector>

#include "shell/base/application.h"
#include "shell/settings_table.h"

namespace brivok {

/// The line that lists an option, newline included.
[[nodiscard]] std::string optionLine(const Option& option, const std::string& value);

/// Prints the option lines, with the current values as defaults.
void listOptions(Application& app);

/// Executes "setoption name X value Y", given as the words of the line. Silently ignores what does
/// not fit.
void setOption(const std::vector<std::string>& words);

}  // namespace brivok
