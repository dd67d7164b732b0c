#include "disk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>

namespace brivok {

bool flushToDisk(std::FILE* file) { return std::fflush(file) == 0 && fsync(fileno(file)) == 0; }

bool flushFolderToDisk(const std::filesystem::path& folder) {
    const std::filesystem::path path = folder.empty() ? "." : folder;
    const int opened = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return false;
    const bool done = fsync(opened) == 0;
    const int reason = errno;
    close(opened);
    errno = reason;
    return done || reason == EINVAL;  // file systems that cannot do it
}

FileLock lockFile(std::FILE* file) {
    if (flock(fileno(file), LOCK_EX | LOCK_NB) == 0) return FileLock::Taken;
    return errno == EWOULDBLOCK ? FileLock::Held : FileLock::Unavailable;
}

bool hasName(std::FILE* file) {
    struct stat status {};
    return fstat(fileno(file), &status) == 0 && status.st_nlink > 0;
}

bool isAt(const std::filesystem::path& path, std::FILE* file) {
    struct stat there {};
    struct stat opened {};
    return stat(path.c_str(), &there) == 0 && fstat(fileno(file), &opened) == 0 &&
           there.st_dev == opened.st_dev && there.st_ino == opened.st_ino;
}

std::string machineName() {
    std::array<char, 256> name{};
    std::string clean;
    if (gethostname(name.data(), name.size() - 1) == 0) clean = name.data();
    for (char& letter : clean) {
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '-';
    }
    return clean.empty() ? "unnamed" : clean;
}

std::uint64_t machineMemory() {
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
           static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace brivok
