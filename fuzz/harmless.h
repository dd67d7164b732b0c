#pragma once

#include <string>
#include <string_view>

namespace brivok::fuzz {

/// Restricts lines of a protocol or of brivok.ini: table sizes to one digit, move counts to one
/// ply, and paths to the current folder.
[[nodiscard]] std::string harmless(std::string_view lines);

}  // namespace brivok::fuzz
