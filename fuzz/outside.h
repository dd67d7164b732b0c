#pragma once

#include <string>

/// What lies around the engine, played for the fuzz targets: outside.cpp implements platform.h and
/// the ends of the process in application.h in its own way. The clock runs by being looked at, and
/// a search gets no further than some hundred nodes.
namespace brivok::fuzz {

/// Thrown where the engine would end the process, also for want of input.
struct ProcessEnded {};

/// Gives the engine its standard input, and sets the clock and the count of nodes back. A search
/// meets one line every few nodes; an empty line lets it go on.
void setInput(std::string lines);

}  // namespace brivok::fuzz
