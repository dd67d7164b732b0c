#pragma once

#include <fstream>
#include <optional>
#include <string>

#include "shell/base/application.h"

namespace brivok {

/// Prints the question and returns the line that answers it, without its newline; nullopt at the
/// end of the input.
[[nodiscard]] std::optional<std::string> Ask(Application& app, const char* question);

/// A text file with one position per line.
class PositionFile {
public:
    /// Opens the file; isOpen() tells whether that worked.
    explicit PositionFile(const std::string& name);

    [[nodiscard]] bool isOpen() const { return file.is_open(); }

    /// Reads the next line without its line end, LF or CRLF; false at the end of the file. A line
    /// of more than 4095 characters arrives in pieces.
    [[nodiscard]] bool next(std::string& line);

private:
    std::ifstream file;
};

}  // namespace brivok
