#include "platform/platform.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>

namespace brivok {

namespace {

Transfer transferOf(ssize_t count) {
    using enum Transfer::Outcome;
    if (count > 0) return {Moved, static_cast<std::size_t>(count)};
    if (count == 0) return {Failed};
    if (errno == EINTR) return {Interrupted};
    return {errno == EAGAIN || errno == EWOULDBLOCK ? WouldBlock : Failed};
}

/// Polls one descriptor for one event; the result of poll().
int pollOne(int descriptor, short event, int timeout) {
    pollfd polled{descriptor, event, 0};
    return ::poll(&polled, 1, timeout);
}

constexpr std::size_t Page = 4096;
constexpr std::size_t HugePage = std::size_t{2} << 20U;
/// A table of fewer bytes fits into so few pages that huge ones do not pay.
constexpr std::size_t LargeTable = 2 * HugePage;

/// Maps zeroed memory; nullptr if it is refused.
char* mapMemory(std::size_t bytes) {
    void* const mapped =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return mapped == MAP_FAILED ? nullptr : static_cast<char*>(mapped);
}

/// The same, aligned to huge pages and made of them if the system has any. `bytes` are whole pages.
char* mapHugePages(std::size_t bytes) {
    char* const mapped = mapMemory(bytes + HugePage);
    if (mapped == nullptr) return nullptr;
    const std::size_t before = HugePage - reinterpret_cast<std::uintptr_t>(mapped) % HugePage;
    char* const aligned = mapped + before;
    ::munmap(mapped, before);
    if (before != HugePage) ::munmap(aligned + bytes, HugePage - before);
#ifdef MADV_HUGEPAGE
    ::madvise(aligned, bytes, MADV_HUGEPAGE);
#endif
    return aligned;
}

class PosixPlatform final : public Platform {
public:
    bool inputIsTerminal() override { return ::isatty(STDIN_FILENO) == 1; }
    bool errorIsTerminal() override { return ::isatty(STDERR_FILENO) == 1; }

    bool inputReady() override { return pollOne(STDIN_FILENO, POLLIN, 0) > 0; }

    Transfer readInput(char* buffer, std::size_t capacity) override {
        return transferOf(::read(STDIN_FILENO, buffer, capacity));
    }

    void waitForInput() override { pollOne(STDIN_FILENO, POLLIN, -1); }

    Transfer writeOutput(std::string_view text) override {
        return transferOf(::write(STDOUT_FILENO, text.data(), text.size()));
    }

    void waitForOutput() override { pollOne(STDOUT_FILENO, POLLOUT, -1); }

    void surviveClosedOutput() override { std::signal(SIGPIPE, SIG_IGN); }

    MadeDirectory makeDirectory(const std::string& path) override {
        if (::mkdir(path.c_str(), 0777) == 0) return MadeDirectory::Success;
        return errno == EEXIST ? MadeDirectory::Exists : MadeDirectory::Failure;
    }

    void* allocateZeroed(std::size_t bytes) override {
        const std::size_t pages = (bytes + Page - 1) / Page * Page;
        return pages < LargeTable ? mapMemory(pages) : mapHugePages(pages);
    }
    void freeZeroed(void* memory, std::size_t bytes) override { ::munmap(memory, bytes); }

    void continueAs(const std::string& suffix, char** arguments) override {
        char file[PATH_MAX];
        const ssize_t length = ::readlink("/proc/self/exe", file, sizeof file);
        if (length <= 0) return;
        ::execv((std::string(file, static_cast<std::size_t>(length)) + suffix).c_str(), arguments);
    }

    std::uint64_t milliseconds() override {
        using namespace std::chrono;
        const auto sinceStart = steady_clock::now().time_since_epoch();
        return static_cast<std::uint64_t>(
            duration_cast<std::chrono::milliseconds>(sinceStart).count());
    }

    void endProcess(int code) override { std::exit(code); }
    void endProcessAtOnce(int code) override { std::_Exit(code); }
};

constinit PosixPlatform posix;

}  // namespace

Platform& systemPlatform() { return posix; }

}  // namespace brivok
