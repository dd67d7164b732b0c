// All folders above src/platform may include this.
#pragma once

#include <cstdio>
#include <memory>
#include <string_view>

namespace brivok {

class Application;

/// The log of a run: a text file with all output, notes prefixed with "## ", and the raw input
/// lines. Nothing is written unless `enabled` is set.
class Logger {
public:
    /// Does not open the log. Failures are printed through the owner.
    explicit Logger(Application& application) : owner(application) {}

    bool enabled = false;  ///< whether a log is open

    /// Opens the log that the settings ask for, if it is not open yet: appends to the single file,
    /// or takes the first free number in the log folder, and writes a header. A failure is printed,
    /// and the program goes on without a log.
    void OpenLog();

    void CloseLog();

    /// Appends the bytes unchanged if a log is open. Does not flush.
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

/// Creates each folder of the path in turn; the part after the last "/" is a file name and is
/// ignored. Prints a failure and stops there.
void CreateLogFolders(std::string_view path);

}  // namespace brivok
