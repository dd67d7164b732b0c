#pragma once

#include <optional>

#include <CLI/CLI.hpp>

#include "run_app.h"

namespace brivok {

/// Parses the arguments and runs the callbacks of the commands that have one. Returns an exit code
/// if the program should end: after --help, or after an error, which has been printed.
[[nodiscard]] inline std::optional<int> parseCommandLine(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : FailureCode;
    }
    return std::nullopt;
}

}  // namespace brivok
