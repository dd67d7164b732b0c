#pragma once

#include <string_view>
#include <vector>

namespace brivok {

/// The fields of a line: what stands between blanks of any kind, tabs and line ends included. None
/// is empty. They are views of the line.
[[nodiscard]] std::vector<std::string_view> fieldsOf(std::string_view line);

}  // namespace brivok
