#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/fake/fake_platform.h"

namespace brivok {

/// A complete run of the engine inside a test: a fresh engine, started as main() does, on a fake
/// platform. Only one can exist at a time.
///
///     Program program;
///     program.type("uci");
///     program.type("go movetime 1000");
///     program.outside.turnClock(1000, after("info depth 5"));
///     program.run();
///     EXPECT_NE(program.output().find("bestmove"), std::string::npos);
///
/// After run() more lines may be typed and run() called again: the engine then waits for a line.
/// Before and between runs the engine's globals (theBoard, theSearcher, settings) may be read and
/// set. After the first run, theApplication->handler->ProcessCommand(line) also handles a line,
/// newline included, directly; under WinBoard this does not start a search, which only run() does.
class Program {
public:
    /// Uses its own fake platform, or one that must outlive it.
    Program() : Program(own) {}
    explicit Program(FakePlatform& platform);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    /// Destroys the engine and restores the previous platform.
    ~Program();

    /// See FakePlatform::type().
    void type(std::string_view line, const Moment& when = now()) { outside.type(line, when); }
    /// See FakePlatform::output().
    [[nodiscard]] const std::string& output() const { return outside.output(); }

    /// Runs the engine until it ends or waits for a line that the script does not have. Does
    /// nothing once it has ended.
    void run();

    FakePlatform& outside;        ///< the platform that the engine runs on
    std::optional<int> exitCode;  ///< set once the engine has ended; theApplication is then null

private:
    FakePlatform own;
    Platform& before;
};

}  // namespace brivok
