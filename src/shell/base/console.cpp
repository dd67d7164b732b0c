#include "shell/base/console.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "platform/platform.h"
#include "shell/base/report.h"

namespace brivok {

namespace {

/// Enough for nearly every text; longer ones are formatted again into a string.
constexpr std::size_t TextRoom = 1024;

template <class Sink>
void formatTo(const char* format, std::va_list values, Sink sink) {
    std::array<char, TextRoom> room;
    std::va_list again;
    va_copy(again, values);
    const int needed = std::vsnprintf(room.data(), room.size(), format, values);
    const auto length = static_cast<std::size_t>(needed);
    if (needed >= 0 && length < room.size()) {
        sink(std::string_view(room.data(), length));
    } else if (needed > 0) {
        std::string text(length + 1, '\0');
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
    while (!text.empty()) {
        const Transfer written = platform().writeOutput(text);
        switch (written.outcome) {
            case Transfer::Outcome::Moved: text.remove_prefix(written.bytes); break;
            case Transfer::Outcome::Interrupted: break;
            case Transfer::Outcome::WouldBlock: platform().waitForOutput(); break;
            case Transfer::Outcome::Failed: return;
        }
    }
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
    while (!app.input.hasLine()) app.input.fill();
    if (app.input.atEnd()) return false;
    line = app.input.take();
    app.logger.write(line);
    return true;
}

Input InputWaiting(Application& app) {
    InputBuffer& input = app.input;
    if (!input.hasLine() && platform().inputReady()) input.fill();
    if (!input.hasLine()) return Input::Nothing;
    return input.atEnd() ? Input::Ended : Input::Line;
}

Input PollInput(Application& app) {
    if (app.handler == nullptr) return Input::Nothing;
    const Input waiting = InputWaiting(app);
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
