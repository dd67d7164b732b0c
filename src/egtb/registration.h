#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brivok {

/// Finding the files of the endgame tables. A missing file is normal; a damaged one, or memory
/// refused on the way, ends the process with code 1 and a line that begins with "*** " on standard
/// output, and the log gets no closing line. Nothing here may run during a search.

/// Looks for table files in the directories of `dir`, a list separated by "," or ";", unless the
/// same list is in force already, and makes the cache when there are any. An empty list means the
/// current directory and is looked at each time.
void InitTablebases(const std::string& dir, std::uint32_t cacheBytes);

/// Makes the cache of the tables anew and empty, if there are tables. Ends the program with code 1
/// when the memory is refused.
void SetCacheSize(std::uint32_t bytes);

/// Forgets all files, checks and registers those of the directories, of which the first that holds
/// a file wins, and returns the number of men of the largest table found, or 0.
[[nodiscard]] int RegisterTables(std::string_view dir);

}  // namespace brivok
