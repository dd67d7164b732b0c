#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "../common/files.h"

namespace brivok {

/// The bytes of a text file of any origin, one after the other, with the number of the line at
/// hand. The line ends of all systems read as one '\n'; a byte order mark at the start is dropped.
class ByteSource {
public:
    static constexpr int End = -1;
    static constexpr std::size_t DefaultCapacity = 1U << 18U;

    /// `name` is for messages. The buffer must hold the longest text that startsWith() is asked
    /// for.
    ByteSource(FileHandle input, std::string name, std::size_t capacity = DefaultCapacity);

    /// The next byte, 0 to 255, or End. A line end may show as '\r' here.
    [[nodiscard]] int peek() { return at < filled || fill(1) ? buffer[at] : End; }

    /// The byte `ahead` places behind the next one, or End.
    [[nodiscard]] int peekAt(std::size_t ahead) {
        return at + ahead < filled || fill(ahead + 1) ? buffer[at + ahead] : End;
    }

    /// Takes the next byte; End again and again at the end.
    int take() {
        const int byte = peek();
        if (byte == End) return End;
        ++at;
        return byte == '\n' || byte == '\r' ? takeLineEnd(byte) : byte;
    }

    /// Takes everything up to the next line end, but not that.
    void skipLine();

    /// Takes everything up to the byte `stop` and that itself, or up to the start of a line that
    /// begins with `alarm`, or to the end. True when `stop` was found.
    [[nodiscard]] bool skipPast(char stop, std::string_view alarm);

    [[nodiscard]] bool startsWith(std::string_view text);
    [[nodiscard]] bool atLineStart() const { return at == lineStart; }

    [[nodiscard]] std::size_t line() const { return lineNumber; }  ///< 1 is the first
    [[nodiscard]] const std::string& name() const { return sourceName; }
    [[nodiscard]] std::uint64_t bytesTaken() const { return bytesRead - (filled - at); }

private:
    /// Reads on until at least `wanted` bytes wait. False when there are no more.
    bool fill(std::size_t wanted);
    int takeLineEnd(int byte);

    FileHandle file;
    std::string sourceName;
    std::vector<unsigned char> buffer;
    std::size_t at = 0;
    std::size_t filled = 0;
    std::size_t lineStart = 0;  ///< index of the first byte of the line at hand, NotInBuffer
    std::size_t lineNumber = 1;
    std::uint64_t bytesRead = 0;

    static constexpr std::size_t NotInBuffer = static_cast<std::size_t>(-1);
};

}  // namespace brivok
