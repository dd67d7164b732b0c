#pragma once

#include <functional>

namespace brivok {

/// Code of every failure of a program, a wrong command line included.
inline constexpr int FailureCode = 1;

/// Carries out the work of a program, which returns the exit code, and gives the code back. An
/// error is told in a line on standard error that begins with the program's name and ends in
/// FailureCode; an interruption by a signal ends in 128 and its number, as shells count.
[[nodiscard]] int runApp(const char* program, const std::function<int()>& work);

}  // namespace brivok
