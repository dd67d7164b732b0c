#pragma once

#include <string>
#include <string_view>

namespace brivok {

/// Reads "brivok.ini" from the current directory, if it exists, over the current settings. Each
/// line has a key, white space and a value; lines that do not fit are silently skipped.
void ReadConfiguration();

/// The value of the key `ModernInterface:` in "brivok.ini"; false without one.
[[nodiscard]] bool wantsModernInterface();

/// Applies one line of the file, given its key (with the colon) and value. False if the key is
/// unknown.
bool setKey(std::string_view key, const std::string& value);

}  // namespace brivok
