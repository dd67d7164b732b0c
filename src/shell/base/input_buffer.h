// Every folder above src/platform may include this.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace brivok {

/// Longest piece of an input line that a handler gets, the newline included; a longer line arrives
/// in several pieces.
inline constexpr std::size_t MaxLineLength = 4095;

/// The bytes of standard input that have been read and not yet handed out. A line stays in place
/// until the next one is asked for.
class InputBuffer {
public:
    /// A whole line, a full piece of one or the end of the input is in the buffer.
    [[nodiscard]] bool hasLine() const { return lineLength() != 0 || ended; }

    /// Everything has been handed out, and no more will come.
    [[nodiscard]] bool atEnd() const { return ended && begin == end; }

    /// Reads until at least one byte has come or the input has ended; blocks if nothing waits. To
    /// be called only while there is no line.
    void fill();

    /// The next line with its newline, a full piece, or what was left before the end. Carriage
    /// returns before the newline are dropped.
    [[nodiscard]] std::string_view take();

private:
    /// Length of the next line or full piece; 0 while neither is complete.
    [[nodiscard]] std::size_t lineLength() const;

    std::array<char, 1U << 16U> bytes{};
    std::size_t begin = 0;            ///< first byte not yet handed out
    std::size_t end = 0;              ///< end of the bytes read
    mutable std::size_t scanned = 0;  ///< no newline lies between begin and here
    bool ended = false;
};

}  // namespace brivok
