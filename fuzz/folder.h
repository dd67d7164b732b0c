#pragma once

#include <string_view>

/// The temporary folder in which a fuzz target runs, so that it writes nothing elsewhere.
namespace brivok::fuzz {

/// Creates or overwrites the file.
void writeFile(const char* name, std::string_view content);

/// Removes all files, including those of the engine.
void removeFiles();

}  // namespace brivok::fuzz
