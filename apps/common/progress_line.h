#pragma once

#include <cstdint>
#include <string>

namespace brivok {

/// A line on standard error that is overwritten during long work. Prints nothing if standard error
/// is not a terminal.
class ProgressLine {
public:
    ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { clear(); }

    /// Whether the line is visible and enough time has passed since the last text. For work that
    /// could update it constantly.
    [[nodiscard]] bool isDue() const;

    /// Replaces the text.
    void show(const std::string& text);

    /// Erases the line, so that other text can take its place.
    void clear();

private:
    bool active;
    bool shown = false;
    std::uint64_t lastShown;  ///< milliseconds
};

}  // namespace brivok
