#include "platform/platform.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace brivok::platform {

bool inputIsTerminal() { return ::isatty(STDIN_FILENO) == 1; }

bool inputReady() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return ::poll(&input, 1, 0) > 0;
}

std::size_t readInput(char* buffer, std::size_t capacity) {
    ssize_t count = 0;
    do {
        count = ::read(STDIN_FILENO, buffer, capacity);
    } while (count < 0 && errno == EINTR);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

std::uint64_t milliseconds() {
    using namespace std::chrono;
    return static_cast<std::uint64_t>(
        duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count());
}

}  // namespace brivok::platform
