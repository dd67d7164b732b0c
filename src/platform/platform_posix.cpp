#include "platform/platform.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
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
