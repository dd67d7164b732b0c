#pragma once

#include <string>
#include <vector>

#include "shell/base/application.h"

namespace brivok {

/// Prints the option lines with the present values as defaults.
void listOptions(Application& app);

/// Carries out "setoption name X value Y", given as the words of the line. What does not fit is
/// dropped without a word.
void setOption(const std::vector<std::string>& words);

}  // namespace brivok
