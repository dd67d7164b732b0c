#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "interrupt.h"

namespace brivok {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading. Throws AppError if it cannot be opened or is a folder.
[[nodiscard]] FileHandle openForReading(const std::filesystem::path& name);

/// A newly created file, open for reading and writing.
struct FreshFile {
    FileHandle file;
    std::filesystem::path path;
};

/// Creates a file next to `target`: `NAME.part-MACHINE-NUMBER`. It is locked until it is closed.
/// Throws AppError if that fails.
[[nodiscard]] FreshFile makeFileBeside(const std::filesystem::path& target);

/// Removes files of makeFileBeside() whose programs were killed, where isOurs(name of the target)
/// is true. Files that another process holds stay. So do, for a day, those of other machines: a
/// shared folder need not pass on their locks.
void removeAbandonedFiles(const std::filesystem::path& folder,
                          const std::function<bool(const std::string& name)>& isOurs);

/// A file that appears under its name complete or not at all, also if the machine fails. Until then
/// it has a temporary name in the same folder, and any existing file keeps its content. Ctrl-C
/// leaves nothing behind either. All operations throw AppError if writing fails and Interrupted if
/// the user gives up.
class NewFile {
public:
    explicit NewFile(std::filesystem::path itsName);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    void write(std::span<const std::uint8_t> bytes);

    /// Further writing overwrites the file from its start.
    void rewind();

    /// Waits until the file is on the disk, and renames it to its final name.
    void finish();

    /// Call this in long work between two writes.
    void checkInterrupt() const { interrupt.check(); }

private:
    InterruptWatch interrupt;
    std::filesystem::path name;
    FreshFile fresh;
};

}  // namespace brivok
