#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>

#include "interrupt.h"

namespace brivok {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading. Throws AppError when it cannot be opened or is a folder.
[[nodiscard]] FileHandle openForReading(const std::filesystem::path& name);

/// A file that did not exist before, open for writing and reading.
struct FreshFile {
    FileHandle file;
    std::filesystem::path path;
};

/// Makes a file beside `target` whose name begins with that of `target`. Throws AppError when the
/// folder takes none.
[[nodiscard]] FreshFile makeFileBeside(const std::filesystem::path& target);

/// A file that appears under its name when it is whole, or not at all: until then it has a
/// temporary name in the same folder, and what was there under its own stays. Ctrl-C leaves nothing
/// behind either. All operations throw AppError when the disk is full or the folder takes no file,
/// and Interrupted when the user gives up.
class NewFile {
public:
    explicit NewFile(std::filesystem::path itsName);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    void write(std::span<const std::uint8_t> bytes);

    /// What is written next takes the place of the first bytes.
    void rewind();

    /// Gives the file its name.
    void finish();

    /// For work between two writes that takes long.
    void checkInterrupt() const { interrupt.check(); }

private:
    InterruptWatch interrupt;
    std::filesystem::path name;
    FreshFile fresh;
};

}  // namespace brivok
