// All folders above src/platform may include this.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace brivok {

/// Longest piece of a line that a handler gets, newline included. Longer lines arrive in pieces.
inline constexpr std::size_t MaxLineLength = 4095;

/// Bytes of standard input that have been read but not yet handed out. A line stays valid until the
/// next one is taken.
class InputBuffer {
public:
    /// Whether the buffer holds a line, a full piece of one, or the end of the input.
    [[nodiscard]] bool hasLine() const { return lineLength() != 0 || ended; }

    /// Whether everything has been handed out and no more can come.
    [[nodiscard]] bool atEnd() const { return ended && begin == end; }

    /// Reads until at least one byte arrives or the input ends; blocks if nothing is there. Call
    /// only while there is no line.
    void fill();

    /// Takes the next line with its newline, a full piece, or what was left before the end.
    /// Carriage returns before the newline are dropped.
    [[nodiscard]] std::string_view take();

private:
    /// Length of the next line or full piece; 0 if there is neither.
    [[nodiscard]] std::size_t lineLength() const;

    std::array<char, 1U << 16U> bytes{};
    std::size_t begin = 0;            ///< first byte not yet handed out
    std::size_t end = 0;              ///< end of the bytes read
    mutable std::size_t scanned = 0;  ///< no newline between `begin` and here
    bool ended = false;
};

}  // namespace brivok
