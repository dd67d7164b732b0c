#pragma once

#include <string>
#include <string_view>

/// What lies around the engine, played for the fuzz targets: outside.cpp implements platform.h and
/// the ends of the process in application.h in its own way. The clock runs by being looked at, a
/// search gets no further than some hundred nodes, and nothing is written outside a temporary
/// folder, which the program works in.
namespace brivok::fuzz {

/// Thrown where the engine would end the process, also for want of input.
struct ProcessEnded {};

/// Gives the engine its standard input, and sets the clock and the count of nodes back. A search
/// meets one line every few nodes; an empty line lets it go on.
void setInput(std::string lines);

/// Writes a file of the folder that the program works in.
void writeFile(const char* name, std::string_view content);

/// Removes the files that the engine has written there.
void removeFiles();

/// The lines as they can be given to the engine: sizes of tables are cut to one digit, counts of
/// moves to one ply, and no path leads out of the folder.
[[nodiscard]] std::string harmless(std::string_view lines);

}  // namespace brivok::fuzz
