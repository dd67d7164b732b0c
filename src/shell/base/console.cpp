#include "shell/base/console.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/platform.h"
#include "shell/base/note.h"

namespace brivok {

namespace {

/// The bytes of standard input that have been read and not yet handed out. A line stays in place
/// until the next one is asked for.
class InputBuffer {
public:
    /// A whole line, a full piece of one or the end of the input is in the buffer.
    [[nodiscard]] bool hasLine() const { return lineLength() != 0 || ended; }
    [[nodiscard]] bool atEnd() const { return ended && begin == end; }

    /// Reads once; blocks if nothing waits.
    void fill() {
        if (begin != 0) {
            std::memmove(bytes.data(), bytes.data() + begin, end - begin);
            end -= begin;
            scanned -= begin;
            begin = 0;
        }
        const std::size_t count = platform::readInput(bytes.data() + end, bytes.size() - end);
        end += count;
        ended = count == 0;
    }

    /// The next line with its newline, a full piece, or what was left before the end.
    [[nodiscard]] std::string_view take() {
        std::size_t length = lineLength();
        if (length == 0) length = end - begin;
        char* const line = bytes.data() + begin;
        begin += length;
        scanned = begin;
        while (length >= 2 && line[length - 1] == '\n' && line[length - 2] == '\r') {
            line[--length - 1] = '\n';
        }
        return {line, length};
    }

private:
    /// Length of the next line or full piece; 0 while neither is complete.
    [[nodiscard]] std::size_t lineLength() const {
        const std::size_t limit = std::min(end, begin + MaxLineLength);
        while (scanned < limit) {
            if (bytes[scanned++] == '\n') {
                --scanned;
                return scanned + 1 - begin;
            }
        }
        return limit - begin == MaxLineLength ? MaxLineLength : 0;
    }

    std::array<char, 1U << 16U> bytes{};
    std::size_t begin = 0;            ///< first byte not yet handed out
    std::size_t end = 0;              ///< end of the bytes read
    mutable std::size_t scanned = 0;  ///< no newline lies between begin and here
    bool ended = false;
};

InputBuffer input;

/// Room for nearly every text; longer ones are formatted a second time into a string.
constexpr std::size_t TextRoom = 1024;

template <class Sink>
void formatTo(const char* format, std::va_list values, Sink sink) {
    std::array<char, TextRoom> room;
    std::va_list again;
    va_copy(again, values);
    const int needed = std::vsnprintf(room.data(), room.size(), format, values);
    if (needed >= 0 && static_cast<std::size_t>(needed) < room.size()) {
        sink(std::string_view(room.data(), static_cast<std::size_t>(needed)));
    } else if (needed > 0) {
        std::string text(static_cast<std::size_t>(needed) + 1, '\0');
        std::vsnprintf(text.data(), text.size(), format, again);
        text.pop_back();
        sink(text);
    }
    va_end(again);
}

void noteIn(Logger& logger, const char* format, std::va_list values) {
    if (!logger.enabled) return;
    formatTo(format, values, [&logger](std::string_view text) {
        logger.write("## ");
        logger.write(text);
    });
}

}  // namespace

void PrintUnlogged(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void Print(Application& app, const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    formatTo(format, values, [&app](std::string_view text) {
        PrintUnlogged(text);
        app.logger.write(text);
    });
    va_end(values);
}

void LogOnly(Application& app, const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    noteIn(app.logger, format, values);
    va_end(values);
}

void Note(const char* format, ...) {
    if (theApplication == nullptr) return;
    std::va_list values;
    va_start(values, format);
    noteIn(theApplication->logger, format, values);
    va_end(values);
}

bool ReadLine(Application& app, std::string_view& line) {
    while (!input.hasLine()) input.fill();
    if (input.atEnd()) return false;
    line = input.take();
    app.logger.write(line);
    return true;
}

Input InputWaiting() {
    if (!input.hasLine() && platform::inputReady()) input.fill();
    if (!input.hasLine()) return Input::Nothing;
    return input.atEnd() ? Input::Ended : Input::Line;
}

Input PollInput(Application& app) {
    if (app.handler == nullptr) return Input::Nothing;
    const Input waiting = InputWaiting();
    std::string_view line;
    if (waiting != Input::Line || !ReadLine(app, line)) return waiting;
    app.handler->ProcessCommand(line);
    return Input::Line;
}

void RunReadLoop(ProtocolHandler& handler) {
    std::string_view line;
    while (!handler.done) {
        if (!ReadLine(handler.app, line)) ExitProgram(0);
        handler.ProcessCommand(line);
    }
}

}  // namespace brivok
