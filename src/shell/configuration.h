#pragma once

#include <string>
#include <string_view>

namespace brivok {

/// Reads "brivok.ini" of the current directory, if there is one, on top of the present settings:
/// lines of a key, white space and a value. Lines that do not fit are skipped without a message.
void ReadConfiguration();

/// Sets what a key, told with its colon, stands for, as a line of the file does. False for a key
/// that there is not.
bool setKey(std::string_view key, const std::string& value);

}  // namespace brivok
