#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace brivok {

/// Ends a command of a program: a message for the user, without the program's name.
class AppError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws AppError with the file and the reason.
[[noreturn]] void fail(const std::filesystem::path& file, const std::string& reason);

/// Throws AppError with the system's message for the last failed call.
[[noreturn]] void failWithErrno(const std::filesystem::path& file);

}  // namespace brivok
