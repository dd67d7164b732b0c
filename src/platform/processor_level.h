#pragma once

namespace brivok {

/// @file
/// Levels of the x86-64 processor, as its ABI defines them: every one has `x86-64`, and those of
/// 2013 on most often `x86-64-v3`, with BMI2 and AVX2. A program for a higher level computes the
/// same in less time.
///
/// The build makes a program for one level and, where its CMake options say so, for higher ones
/// too. Each of these is a file beside it that has the level in its name: `brivok` and
/// `brivok-x86-64-v3`.

/// The level that this program is compiled for; the processor's name if it is no x86-64.
[[nodiscard]] const char* ownLevel();

/// Continues as the program for the highest level that the processor has, with the same arguments.
/// Returns if that is this one, or if its file is missing. To be called by main() before anything
/// else, since nothing of this program remains.
///
/// The environment variable BRIVOK_CPU, unless empty, names the level to run at instead. If it
/// cannot be had, a line on standard error says so, and the call returns.
void continueAtBestLevel(char** arguments);

}  // namespace brivok
