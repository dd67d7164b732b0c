#pragma once

namespace brivok {

/// Reads "brivok.ini" of the current directory, if there is one, on top of the present settings:
/// lines of a key, white space and a value. Lines that do not fit are skipped without a message.
void ReadConfiguration();

}  // namespace brivok
