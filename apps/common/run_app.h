#pragma once

#include <functional>

namespace brivok {

/// Exit code of every failure, including a wrong command line.
inline constexpr int FailureCode = 1;

/// Runs the work of a program and returns its exit code. An error is printed on standard error,
/// after the program's name, and gives FailureCode; so does standard output that cannot be written,
/// and a file that reaches the limit for the size of files is an error like a full disk. An
/// interruption by a signal gives 128 plus its number, as in shells.
[[nodiscard]] int runApp(const char* program, const std::function<int()>& work);

}  // namespace brivok
