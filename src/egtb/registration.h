#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brivok {

/// Finds the files of the endgame tables. A missing file is normal. A damaged file, or refused
/// memory, ends the process with code 1 and a line starting with "*** " on standard output; the log
/// gets no closing line. Do not call any of this during a search.

/// Looks for table files in the directories of `dir`, a list separated by "," or ";", unless that
/// list is already in use, and creates the cache if there are any. Names of directories and files
/// are compared without regard to case. An empty list means the current directory, which is
/// searched at every call.
void InitTablebases(const std::string& dir, std::uint32_t cacheBytes);

/// Replaces the cache by an empty one, if there are tables. Ends the program with code 1 if memory
/// is refused.
void SetCacheSize(std::uint32_t bytes);

/// Forgets all files, then checks and registers those in the directories; the first directory with
/// a file wins. Returns the number of men of the largest table found, or 0.
[[nodiscard]] int RegisterTables(std::string_view dir);

}  // namespace brivok
