#pragma once

#include <cstdio>
#include <string>
#include <utility>

#include "../common/progress_line.h"

namespace brivok::tables {

/// Prints the progress and the outcome of work on a table or file.
class Task {
public:
    explicit Task(std::string itsName) : name(std::move(itsName)) {}

    void show(const std::string& step) { line.show(name + ": " + step); }

    /// Prints the outcome as a line on standard output.
    void report(const std::string& outcome) {
        line.clear();
        std::printf("%s: %s\n", name.c_str(), outcome.c_str());
        std::fflush(stdout);
    }

private:
    std::string name;
    ProgressLine line;
};

}  // namespace brivok::tables
