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

/// Thrown where the process would end. Not derived from std::exception, so that no handler mistakes
/// it for a failure.
struct ProcessEnded {
    int code;  ///< exit code of the process
};

/// Thrown by a read that would block for ever: the script is finished, and the input is still open.
struct ScriptDone {};

/// When a step of a script is due: once the step before it is done, this text has been printed
/// since, and the clock has reached this time. An empty text and a time of 0 mean at once.
struct Moment {
    std::string printed;     ///< matched as is; may end within a line
    std::uint64_t time = 0;  ///< milliseconds of the fake clock
};

[[nodiscard]] inline Moment now() { return {}; }
/// Once the text has been printed after the step before.
[[nodiscard]] inline Moment after(std::string text) { return {std::move(text)}; }
/// Once the clock shows this many milliseconds.
[[nodiscard]] inline Moment at(std::uint64_t time) { return {{}, time}; }

/// The engine's outside world, played by a script: input arrives line by line, output is kept, and
/// the clock is turned by hand, by the script or by being looked at. The real clock is never read,
/// so every run is the same. A derived class may override single calls to make them fail or to
/// watch them.
///
/// Steps run in order, each when its Moment has come. A read that blocks waits for the next step:
/// the clock jumps to the step's time. A read cannot wait for text, since nothing is printed during
/// it; it then throws a std::logic_error that says what was missing. The same is thrown when so
/// many looks at clock or input bring nothing that the search seems endless.
class FakePlatform : public Platform {
public:
    FakePlatform() = default;
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;
    virtual ~FakePlatform() = default;

    /// A step: a line of input arrives. A newline is added; a line with newlines inside arrives as
    /// several lines in one piece.
    void type(std::string_view line, const Moment& when = now());
    /// A step: these bytes arrive in one piece. A read never takes bytes of two pieces.
    void send(std::string bytes, const Moment& when = now());
    /// A step: the clock jumps forward.
    void turnClock(std::uint64_t milliseconds, const Moment& when = now());
    /// The last step: the input is closed. Without it the input stays open, and a read after the
    /// last step throws ScriptDone.
    void closeInput(const Moment& when = now());

    /// Every step is done. The input may still be open.
    [[nodiscard]] bool isScriptDone() const { return script.empty(); }

    [[nodiscard]] const std::string& output() const { return printed; }

    std::uint64_t clock = 0;       ///< milliseconds; may be set by hand, forwards only
    std::uint64_t stepOfLook = 0;  ///< milliseconds by which each look at the clock advances it
    /// Milliseconds by which each non-blocking look at the input advances the clock.
    std::uint64_t stepOfPoll = 0;
    std::uint64_t patience = 500;   ///< looks at input or clock allowed without a read or a write
    bool isTerminal = false;        ///< whether input and error are terminals
    std::set<std::string> folders;  ///< folders made so far; none is made on disk

    bool inputIsTerminal() override { return isTerminal; }
    bool errorIsTerminal() override { return isTerminal; }
    bool inputReady() override;
    Transfer readInput(char* buffer, std::size_t capacity) override;
    void waitForInput() override {}
    Transfer writeOutput(std::string_view text) override;
    void waitForOutput() override {}
    void surviveClosedOutput() override {}
    MadeDirectory makeDirectory(const std::string& path) override;
    void* allocateZeroed(std::size_t bytes) override {
        return systemPlatform().allocateZeroed(bytes);
    }
    void freeZeroed(void* memory, std::size_t bytes) override {
        systemPlatform().freeZeroed(memory, bytes);
    }
    void continueAs(const std::string&, char**) override {}
    std::uint64_t milliseconds() override;
    void endProcess(int code) override { throw ProcessEnded{code}; }
    void endProcessAtOnce(int code) override { throw ProcessEnded{code}; }

private:
    enum class Kind { Input, TurnClock, CloseInput };
    struct Step {
        Kind kind;
        Moment when;
        std::string bytes;               ///< of an input: what has not been read yet
        std::uint64_t milliseconds = 0;  ///< by which to advance the clock
    };

    void countLook();
    void add(Step step);
    /// Whether the text that the next step waits for has been printed.
    [[nodiscard]] bool isPrinted();
    /// Removes the next step, which is done.
    void finishStep();
    /// Performs the steps that are due, up to one that needs a reader. True if there is something
    /// to read.
    bool doSteps();

    std::uint64_t idleLooks = 0;  ///< looks at input or clock since the last read or write
    std::deque<Step> script;
    std::string printed;
    std::size_t searched = 0;  ///< the search for the next step's text in `printed` starts here
};

}  // namespace brivok
