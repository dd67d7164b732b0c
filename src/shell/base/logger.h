// Every folder above src/platform may include this.
#pragma once

#include <cstdio>
#include <memory>
#include <string_view>

namespace brivok {

class Application;

/// The log of a run: a text file of what the program printed, what it noted for itself behind
/// "## ", and the raw input lines. Nothing is written unless `enabled` is set.
class Logger {
public:
    /// Opens nothing. Failures are printed through the owner.
    explicit Logger(Application& application) : owner(application) {}

    bool enabled = false;  ///< a log is open

    /// Opens the log that the settings ask for, if it is not open yet: the single file, appended
    /// to, or the first free number in the log folder, with a head block. A failure is printed and
    /// costs the log alone.
    void OpenLog();

    /// Flushes and closes the log.
    void CloseLog();

    /// Appends the bytes as they stand, if a log is open. Not flushed.
    void write(std::string_view text) {
        if (enabled && file) std::fwrite(text.data(), 1, text.size(), file.get());
    }

private:
    void WriteLogHeader();

    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    std::unique_ptr<std::FILE, Close> file;
    Application& owner;
};

/// Creates each folder of the path in turn; what follows the last "/" is a file name and creates
/// nothing. A failure is told on standard output and ends the attempt.
void CreateLogFolders(std::string_view path);

}  // namespace brivok
