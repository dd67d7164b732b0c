#pragma once

#include <string_view>

/// The temporary folder that a fuzz target works in, so that nothing is written elsewhere.
namespace brivok::fuzz {

/// Makes the file, or overwrites it.
void writeFile(const char* name, std::string_view content);

/// Removes the files that are there, the engine's own as well.
void removeFiles();

}  // namespace brivok::fuzz
