#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace brivok {

/// Result of one attempt to read or write.
struct Transfer {
    enum class Outcome {
        Moved,        ///< `bytes` were transferred, at least one
        Interrupted,  ///< nothing transferred; try again at once
        WouldBlock,   ///< nothing transferred; wait, then try again
        Failed        ///< nothing transferred: end of input, nobody reads the output, or an error
    };
    Outcome outcome;
    std::size_t bytes = 0;  ///< transferred; 0 unless the outcome is Moved
};

/// Result of makeDirectory().
enum class MadeDirectory { Success, Exists, Failure };

/// What the engine needs from the operating system. A port to another system, or a test that plays
/// the system, implements this and nothing else.
class Platform {
public:
    /// Whether standard input is a terminal, not a pipe or a file.
    [[nodiscard]] virtual bool inputIsTerminal() = 0;

    /// The same for standard error.
    [[nodiscard]] virtual bool errorIsTerminal() = 0;

    /// Whether a read of standard input would not block: there are bytes, or the other end is
    /// closed.
    [[nodiscard]] virtual bool inputReady() = 0;

    /// Reads 1 to `capacity` bytes from standard input in one attempt. Blocks until there is one,
    /// unless the input has been made non-blocking.
    [[nodiscard]] virtual Transfer readInput(char* buffer, std::size_t capacity) = 0;

    /// Blocks until inputReady().
    virtual void waitForInput() = 0;

    /// Writes one or more of the first bytes of a non-empty text to standard output in one attempt,
    /// unbuffered. Blocks until there is room, unless the output has been made non-blocking.
    [[nodiscard]] virtual Transfer writeOutput(std::string_view text) = 0;

    /// Blocks until there is room for output, or nobody reads it any more.
    virtual void waitForOutput() = 0;

    /// From now on, writing output that nobody reads does not end the process.
    virtual void surviveClosedOutput() = 0;

    /// Makes one folder; its parent must exist. `Exists` can also mean a file of that name.
    [[nodiscard]] virtual MadeDirectory makeDirectory(const std::string& path) = 0;

    /// Zeroed memory for a table, aligned to 4096 bytes or more; nullptr if it is refused. The
    /// system is asked to back a large table by huge pages: a search reads a table all over, and
    /// each small page that it touches takes a walk through the page tables.
    [[nodiscard]] virtual void* allocateZeroed(std::size_t bytes) = 0;
    /// Gives back memory of allocateZeroed(), of which the size was `bytes`.
    virtual void freeZeroed(void* memory, std::size_t bytes) = 0;

    /// Continues this process as another program: the file that is named as the running one's with
    /// `suffix` added. Arguments (as of main()) are passed on; environment and open files stay.
    /// Returns if it cannot be done, most likely because there is no such file.
    virtual void continueAs(const std::string& suffix, char** arguments) = 0;

    /// Milliseconds on a steady clock, from an arbitrary start.
    [[nodiscard]] virtual std::uint64_t milliseconds() = 0;

    // Neither returns, but g++ 12 loses [[noreturn]] here.
    /// Ends the process normally: flushes streams and destroys globals.
    virtual void endProcess(int code) = 0;
    /// Ends the process at once, without flushing or destroying anything.
    virtual void endProcessAtOnce(int code) = 0;

protected:
    ~Platform() = default;
};

/// The operating system's. Usable before any constructor has run.
[[nodiscard]] Platform& systemPlatform();

/// The platform in use: the operating system's unless it has been replaced.
[[nodiscard]] Platform& platform();

/// Installs another platform, not owned; returns the previous one.
Platform& replacePlatform(Platform& other);

}  // namespace brivok
