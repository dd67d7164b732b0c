#pragma once

#include <fstream>
#include <optional>
#include <string>

#include "shell/base/application.h"

namespace brivok {

/// Prints the question and reads the line that answers it, without its newline. Nothing at the end
/// of the input.
[[nodiscard]] std::optional<std::string> Ask(Application& app, const char* question);

/// A text file of positions, one in a line.
class PositionFile {
public:
    /// Opens the file; isOpen() tells whether that went well.
    explicit PositionFile(const std::string& name);

    /// The file could be opened.
    [[nodiscard]] bool isOpen() const { return file.is_open(); }

    /// The next line without its end, of whichever system it is; false at the end of the file. A
    /// line of more than 4095 characters comes in several pieces.
    [[nodiscard]] bool next(std::string& line);

private:
    std::ifstream file;
};

}  // namespace brivok
