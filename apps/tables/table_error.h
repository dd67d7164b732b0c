#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace brivok::tables {

/// What is wrong with a table or a file, for the user.
class TableError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

[[noreturn]] inline void fail(const std::filesystem::path& file, const std::string& reason) {
    throw TableError(file.string() + ": " + reason);
}

}  // namespace brivok::tables
