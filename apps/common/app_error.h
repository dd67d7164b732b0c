#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace brivok {

/// What ends a command of a program: a text for the user, without the program's name.
class AppError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws AppError: the file, and what is wrong with it.
[[noreturn]] void fail(const std::filesystem::path& file, const std::string& reason);

/// The same, the reason being the system's own words for the last failed call.
[[noreturn]] void failWithErrno(const std::filesystem::path& file);

}  // namespace brivok
