#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "../common/files.h"

namespace brivok {

/// The bytes of a text file, one by one, with the current line number. Line ends of all systems
/// read as one newline; a byte order mark at the start is skipped.
class ByteSource {
public:
    static constexpr int End = -1;
    static constexpr std::size_t DefaultCapacity = 1U << 18U;

    /// `name` is for messages. `capacity` must be at least the longest text passed to startsWith().
    ByteSource(FileHandle input, std::string name, std::size_t capacity = DefaultCapacity);

    /// The next byte, 0 to 255, or End. A line end may appear as '\r' here.
    [[nodiscard]] int peek() { return at < filled || fill(1) ? buffer[at] : End; }

    /// The byte `ahead` places after the next one, or End.
    [[nodiscard]] int peekAt(std::size_t ahead) {
        return at + ahead < filled || fill(ahead + 1) ? buffer[at + ahead] : End;
    }

    /// Takes the next byte; End at the end, however often it is called.
    int take() {
        const int byte = peek();
        if (byte == End) return End;
        ++at;
        return byte == '\n' || byte == '\r' ? takeLineEnd(byte) : byte;
    }

    /// Skips to the next line end, without taking it.
    void skipLine();

    /// Skips past the byte `stop`, or to the start of a line that begins with `alarm`, or to the
    /// end. True if `stop` was found.
    [[nodiscard]] bool skipPast(char stop, std::string_view alarm);

    [[nodiscard]] bool startsWith(std::string_view text);
    [[nodiscard]] bool atLineStart() const { return at == lineStart; }

    [[nodiscard]] std::size_t line() const { return lineNumber; }  ///< starts at 1
    [[nodiscard]] const std::string& name() const { return sourceName; }
    [[nodiscard]] std::uint64_t bytesTaken() const { return bytesRead - (filled - at); }

private:
    /// Reads until at least `wanted` bytes are buffered. False if there are not enough.
    bool fill(std::size_t wanted);
    int takeLineEnd(int byte);

    FileHandle file;
    std::string sourceName;
    std::vector<unsigned char> buffer;
    std::size_t at = 0;
    std::size_t filled = 0;
    std::size_t lineStart = 0;  ///< index of the first byte of the current line, or NotInBuffer
    std::size_t lineNumber = 1;
    std::uint64_t bytesRead = 0;

    static constexpr std::size_t NotInBuffer = static_cast<std::size_t>(-1);
};

}  // namespace brivok
