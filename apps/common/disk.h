#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

/// What files need of the operating system beyond the standard library.
namespace brivok {

/// Waits until what was written to a file is on the disk. Returns whether it is; `errno` tells why
/// not.
[[nodiscard]] bool flushToDisk(std::FILE* file);

/// The same for the names in a folder, as far as its file system can do so.
[[nodiscard]] bool flushFolderToDisk(const std::filesystem::path& folder);

/// The answer to a request for a lock.
enum class FileLock {
    Taken,       ///< by this process, until it closes the file or ends, in whatever way
    Held,        ///< by another process
    Unavailable  ///< the file system has no locks
};
[[nodiscard]] FileLock lockFile(std::FILE* file);

/// Whether the file still has a name.
[[nodiscard]] bool hasName(std::FILE* file);

/// Whether a path leads to this open file.
[[nodiscard]] bool isAt(const std::filesystem::path& path, std::FILE* file);

/// The name of this machine, of letters, digits and hyphens.
[[nodiscard]] std::string machineName();

/// Bytes of memory of this machine.
[[nodiscard]] std::uint64_t machineMemory();

}  // namespace brivok
