#include "scratch_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "app_error.h"

namespace brivok {
namespace {

class Descriptor {
public:
    explicit Descriptor(int itsNumber) : number(itsNumber) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }

    const int number;
};

[[noreturn]] void refuse(const std::filesystem::path& where, std::size_t bytes, int error) {
    constexpr std::size_t Megabyte = 1'000'000;
    fail(where, std::to_string(bytes / Megabyte) + " MB refused: " + std::strerror(error));
}

/// A file of this length that no longer has a name. Its space is reserved, so that a disk that
/// fills up later does no harm.
int openNameless(const std::filesystem::path& folder, std::size_t bytes) {
    std::string name = (folder / "scratch-XXXXXX").string();
    const int file = ::mkstemp(name.data());
    if (file < 0) failWithErrno(folder);
    ::unlink(name.c_str());
    if (const int error = ::posix_fallocate(file, 0, static_cast<off_t>(bytes)); error != 0) {
        ::close(file);
        refuse(folder, bytes, error);
    }
    return file;
}

}  // namespace

ScratchMemory::ScratchMemory(std::size_t itsBytes, const std::filesystem::path& folder)
    : bytes(itsBytes) {
    if (bytes == 0) return;
    const bool isFile = !folder.empty();
    const Descriptor file(isFile ? openNameless(folder, bytes) : -1);
    const int flags = isFile ? MAP_SHARED : MAP_PRIVATE | MAP_ANONYMOUS;
    void* const mapped = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, flags, file.number, 0);
    if (mapped == MAP_FAILED) refuse(isFile ? folder : "memory", bytes, errno);
    memory = mapped;
}

ScratchMemory::~ScratchMemory() {
    if (memory != nullptr) ::munmap(memory, bytes);
}

}  // namespace brivok
