#pragma once

#include <optional>
#include <string_view>

#include "platform/fake/fake_platform.h"

namespace brivok {

/// A whole run of the engine within the test: a fresh engine as main() starts it, over a fake
/// platform. One at a time.
///
///     Program program;
///     program.type("uci");
///     program.type("go movetime 1000");
///     program.outside.turnClock(1000, after("info depth 5"));
///     program.run();
///     EXPECT_NE(program.output().find("bestmove"), std::string::npos);
///
/// After run() more may be typed and run() called again, since the engine then waits for a line.
/// Before the first run and between two of them the globals of the engine (theBoard, theSearcher,
/// settings) may be looked at and set. After the first run a line, with its newline, may also be
/// handed over directly by theApplication->handler->ProcessCommand(line); under WinBoard that alone
/// starts no search, which only the flow of the game in run() does.
class Program {
public:
    /// Over a fake platform of its own, or over another one, which outlives it.
    Program() : Program(own) {}
    explicit Program(FakePlatform& platform);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    /// Takes the engine down and puts the platform from before in force.
    ~Program();

    /// As the platform's.
    void type(std::string_view line, const Moment& when = now()) { outside.type(line, when); }
    /// As the platform's.
    [[nodiscard]] const std::string& output() const { return outside.output(); }

    /// Lets the engine run until it waits for a line that the script does not have, or ends. Does
    /// nothing when it has ended.
    void run();

    FakePlatform& outside;        ///< that the engine meets
    std::optional<int> exitCode;  ///< of the engine when it has ended; theApplication is gone then

private:
    FakePlatform own;
    Platform& before;
};

}  // namespace brivok
