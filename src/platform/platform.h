#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// What the engine asks of the operating system, and nothing of how it is done. A second
/// implementation behind this header is all that another system needs.
namespace brivok::platform {

/// True when standard input is a terminal, false for a pipe or a file.
[[nodiscard]] bool inputIsTerminal();

/// True when standard error is a terminal.
[[nodiscard]] bool errorIsTerminal();

/// True when a read of standard input would not block: bytes wait, or the other end is closed.
[[nodiscard]] bool inputReady();

/// Reads at most `capacity` bytes from standard input, blocking until at least one is there.
/// Returns the number of bytes read; 0 at the end of the input and on a read error.
[[nodiscard]] std::size_t readInput(char* buffer, std::size_t capacity);

/// From now on output that nobody reads any more is lost without ending the process.
void surviveClosedOutput();

/// What became of an attempt to make a folder.
enum class MadeDirectory { Success, Exists, Failure };

/// Makes one folder, whose parent must be there. `Exists` does not tell a folder of that name from
/// a file.
[[nodiscard]] MadeDirectory makeDirectory(const std::string& path);

/// Milliseconds of a steady clock since some fixed start.
[[nodiscard]] std::uint64_t milliseconds();

}  // namespace brivok::platform
