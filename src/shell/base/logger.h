#pragma once

#include <cstdio>
#include <memory>
#include <string_view>

namespace brivok {

/// The log of a run: a text file of what the program printed, what it noted for itself behind
/// "## ", and the raw input lines. Nothing is written unless `enabled` is set.
class Logger {
public:
    bool enabled = false;

    /// Appends the bytes as they stand, if a log is open. Not flushed.
    void write(std::string_view text) {
        if (enabled && file) std::fwrite(text.data(), 1, text.size(), file.get());
    }

    /// Goes on in this open stream, which the logger closes in the end.
    void attach(std::FILE* stream) {
        file.reset(stream);
        enabled = stream != nullptr;
    }

private:
    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    std::unique_ptr<std::FILE, Close> file;
};

}  // namespace brivok
