#include "platform/platform.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>

namespace brivok::platform {

bool inputIsTerminal() { return ::isatty(STDIN_FILENO) == 1; }

bool errorIsTerminal() { return ::isatty(STDERR_FILENO) == 1; }

bool inputReady() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return ::poll(&input, 1, 0) > 0;
}

std::size_t readInput(char* buffer, std::size_t capacity) {
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, buffer, capacity);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            // Somebody has made the descriptor non-blocking.
            pollfd input{STDIN_FILENO, POLLIN, 0};
            ::poll(&input, 1, -1);
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

void surviveClosedOutput() { std::signal(SIGPIPE, SIG_IGN); }

MadeDirectory makeDirectory(const std::string& path) {
    if (::mkdir(path.c_str(), 0777) == 0) return MadeDirectory::Success;
    return errno == EEXIST ? MadeDirectory::Exists : MadeDirectory::Failure;
}

std::uint64_t milliseconds() {
    using namespace std::chrono;
    return static_cast<std::uint64_t>(
        duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count());
}

}  // namespace brivok::platform
