#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "platform/platform.h"

namespace brivok {

/// Thrown where the process would end. Not derived from std::exception, so that nothing takes it
/// for a failure.
struct ProcessEnded {
    int code;  ///< that the process would end with
};

/// Thrown by a read that would block for ever: every step of the script is done, and the input is
/// still open.
struct ScriptDone {};

/// When a step of a script is due: the step before it is done, this text has been printed since
/// then, and the clock has come to this time. An empty text and a time of 0 mean: at once.
struct Moment {
    std::string printed;     ///< no line breaks are added; it may end within a line
    std::uint64_t time = 0;  ///< milliseconds of the fake clock
};

/// At once.
[[nodiscard]] inline Moment now() { return {}; }
/// When the text has been printed, after the step before.
[[nodiscard]] inline Moment after(std::string text) { return {std::move(text)}; }
/// When the clock shows so many milliseconds.
[[nodiscard]] inline Moment at(std::uint64_t time) { return {{}, time}; }

/// The outside of the engine, played by a script: its input comes line by line, its output is kept,
/// and its clock is turned by hand, by the script, or by being looked at. Nothing here looks at the
/// real clock, so a run is the same every time. A derived class may override single calls, to make
/// them fail or to look on.
///
/// The steps of the script are done in their order, each when its Moment has come. A read that
/// blocks waits for the next step: the clock jumps to its time. It cannot wait for a text, since
/// nothing is printed during a read; std::logic_error then tells what was missing. It is thrown too
/// when so many looks bring nothing that the search seems to have no end.
class FakePlatform : public Platform {
public:
    FakePlatform() = default;
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;
    virtual ~FakePlatform() = default;

    /// A step: a line of input can be read. Its newline is added; with more newlines in it several
    /// lines come in one piece.
    void type(std::string_view line, const Moment& when = now());
    /// A step: these bytes can be read, as one piece. A read never takes bytes of two pieces.
    void send(std::string bytes, const Moment& when = now());
    /// A step: the clock jumps forward by so many milliseconds.
    void turnClock(std::uint64_t milliseconds, const Moment& when = now());
    /// The last step: the input is closed, and what would be read next is its end. Without this
    /// step it stays open, and a read that comes after the last step throws ScriptDone.
    void closeInput(const Moment& when = now());

    /// Every step is done, and the input still open.
    [[nodiscard]] bool isScriptDone() const { return script.empty(); }

    /// All that has been printed.
    [[nodiscard]] const std::string& output() const { return printed; }

    std::uint64_t clock = 0;        ///< milliseconds; may be set by hand, forwards
    std::uint64_t stepOfLook = 0;   ///< by so many milliseconds each look at the clock moves it on
    std::uint64_t stepOfPoll = 0;   ///< and so does each look at the input without blocking
    std::uint64_t patience = 500;   ///< most looks, at input or clock, without a read or a write
    bool isTerminal = false;        ///< input and error are terminals
    std::set<std::string> folders;  ///< made so far; none of them is made on the disk

    bool inputIsTerminal() override { return isTerminal; }
    bool errorIsTerminal() override { return isTerminal; }
    bool inputReady() override;
    Transfer readInput(char* buffer, std::size_t capacity) override;
    void waitForInput() override {}
    Transfer writeOutput(std::string_view text) override;
    void waitForOutput() override {}
    void surviveClosedOutput() override {}
    MadeDirectory makeDirectory(const std::string& path) override;
    std::uint64_t milliseconds() override;
    void endProcess(int code) override { throw ProcessEnded{code}; }
    void endProcessAtOnce(int code) override { throw ProcessEnded{code}; }

private:
    enum class Kind { Input, TurnClock, CloseInput };
    struct Step {
        Kind kind;
        Moment when;
        std::string bytes;               ///< of an input, what has not been read yet
        std::uint64_t milliseconds = 0;  ///< to turn the clock by
    };

    void countLook();
    void add(Step step);
    /// The next step's text has been printed.
    [[nodiscard]] bool isPrinted();
    /// Takes the next step, which is done, off the script.
    void finishStep();
    /// Does the steps that are due, as far as they need no reader. True when a reader has something
    /// to read.
    bool doSteps();

    std::uint64_t idleLooks = 0;  ///< at input or clock since the last read or write
    std::deque<Step> script;
    std::string printed;
    std::size_t searched = 0;  ///< from here on the next step's text is looked for in `printed`
};

}  // namespace brivok
