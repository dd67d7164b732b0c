#pragma once

#include <string>
#include <string_view>

namespace brivok::fuzz {

/// The lines of a protocol or of brivok.ini as the engine may get them: sizes of tables are cut to
/// one digit, counts of moves to one ply, and no path leads out of the folder.
[[nodiscard]] std::string harmless(std::string_view lines);

}  // namespace brivok::fuzz
