#include "program.h"

#include <gtest/gtest.h>

#include "shell/base/application.h"

namespace brivok {
namespace {

TEST(ProgramTest, RunsAsOftenAsThereIsInput) {
    Program program;
    program.run();
    EXPECT_EQ(program.output(), "");
    program.type("uci");
    program.run();
    EXPECT_TRUE(program.output().ends_with("uciok\n"));
    program.type("isready\nisready");
    program.type("position startpos moves e2e4\nquit", after("readyok\nreadyok"));
    program.type("isready");
    program.run();
    EXPECT_EQ(program.exitCode, 0);
    EXPECT_EQ(theApplication, nullptr);
    EXPECT_FALSE(program.outside.isScriptDone());
}

}  // namespace
}  // namespace brivok
