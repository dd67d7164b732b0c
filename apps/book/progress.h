#pragma once

#include <cstdint>

namespace brivok {

/// One line on standard error that is written over and over while a long work goes on. Says
/// nothing where standard error is no terminal.
class Progress {
public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// Tells how far the work is. Cheap enough to be called for every game. `bytesDone` of
    /// `bytesInAll` are read; 0 in all if nobody knows.
    void games(std::uint64_t count, std::uint64_t bytesDone, std::uint64_t bytesInAll);

    /// Wipes the line, so that other text can take its place.
    void clear();

private:
    bool active;
    bool shown = false;
    std::uint64_t calls = 0;
    std::uint64_t start;
    std::uint64_t lastShown;
};

}  // namespace brivok
