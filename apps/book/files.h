#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace brivok {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading. Throws BookError when it cannot be opened or is a folder.
[[nodiscard]] FileHandle openForReading(const std::string& name);

/// A file that did not exist before, open for writing and reading.
struct FreshFile {
    FileHandle file;
    std::filesystem::path path;
};

/// Makes a file beside `target` whose name begins with that of `target`. Throws BookError when the
/// folder takes none.
[[nodiscard]] FreshFile makeFileBeside(const std::filesystem::path& target);

/// Throws BookError with the system's own words for the last failed call.
[[noreturn]] void failWithErrno(const std::string& what);

}  // namespace brivok
