#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace brivok {

/// What one attempt to read or write has come to.
struct Transfer {
    /// How it went.
    enum class Outcome {
        Moved,        ///< `bytes` were moved, at least one
        Interrupted,  ///< none was; the attempt may be made again at once
        WouldBlock,   ///< none was; the attempt may be made again after waiting
        Failed        ///< none was: the input has ended, nobody reads the output, or an error
    };
    Outcome outcome;        ///< of the attempt
    std::size_t bytes = 0;  ///< moved; 0 unless the outcome is Moved
};

/// What became of an attempt to make a folder.
enum class MadeDirectory { Success, Exists, Failure };

/// What the engine asks of the outside, and nothing of how it is done. Another implementation is
/// all that another system needs, or a test that plays the outside itself.
class Platform {
public:
    /// True when standard input is a terminal, false for a pipe or a file.
    [[nodiscard]] virtual bool inputIsTerminal() = 0;

    /// True when standard error is a terminal.
    [[nodiscard]] virtual bool errorIsTerminal() = 0;

    /// True when a read of standard input would not block: bytes wait, or the other end is closed.
    [[nodiscard]] virtual bool inputReady() = 0;

    /// Reads at most `capacity` bytes from standard input, one or more, in one attempt. It blocks
    /// until one is there, unless somebody has made the input non-blocking.
    [[nodiscard]] virtual Transfer readInput(char* buffer, std::size_t capacity) = 0;

    /// Blocks until inputReady().
    virtual void waitForInput() = 0;

    /// Writes the first bytes of a text that is not empty, one or more, to standard output in one
    /// attempt. What is written is on its way when this returns. It blocks until there is room,
    /// unless somebody has made the output non-blocking.
    [[nodiscard]] virtual Transfer writeOutput(std::string_view text) = 0;

    /// Blocks until a write to standard output would not block.
    virtual void waitForOutput() = 0;

    /// From now on output that nobody reads any more is lost without ending the process.
    virtual void surviveClosedOutput() = 0;

    /// Makes one folder, whose parent must be there. `Exists` does not tell a folder of that name
    /// from a file.
    [[nodiscard]] virtual MadeDirectory makeDirectory(const std::string& path) = 0;

    /// Milliseconds of a steady clock since some fixed start.
    [[nodiscard]] virtual std::uint64_t milliseconds() = 0;

    // Neither returns; g++ 12 forgets the attribute that would say so.
    /// Ends the process in order, its streams flushed and its globals destroyed.
    virtual void endProcess(int code) = 0;
    /// Ends the process on the spot: nothing more is flushed or destroyed.
    virtual void endProcessAtOnce(int code) = 0;

protected:
    ~Platform() = default;
};

/// That of the operating system. It can be used before any constructor has run.
[[nodiscard]] Platform& systemPlatform();

/// The platform in force: that of the operating system unless another one has taken its place.
[[nodiscard]] Platform& platform();

/// Puts another platform in force, not owned; returns the one before it.
Platform& replacePlatform(Platform& other);

}  // namespace brivok
