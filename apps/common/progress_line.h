#pragma once

#include <cstdint>
#include <string>

namespace brivok {

/// The last line on standard error, written over and over while a long work goes on. Says nothing
/// where standard error is no terminal.
class ProgressLine {
public:
    ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { clear(); }

    /// Somebody is looking, and a moment has passed since the last text: for work that could tell
    /// something new all the time.
    [[nodiscard]] bool isDue() const;

    /// Puts a text in place of the one before.
    void show(const std::string& text);

    /// Wipes the line, so that other text can take its place.
    void clear();

private:
    bool active;
    bool shown = false;
    std::uint64_t lastShown;  ///< milliseconds
};

}  // namespace brivok
