#include "interrupt.h"

namespace brivok {

namespace {

volatile std::sig_atomic_t received = 0;

void note(int number) {
    received = number;
    std::signal(number, SIG_DFL);
}

/// Handles a signal, unless the parent process has set it to be ignored.
auto takeOver(int number) {
    const auto before = std::signal(number, note);
    if (before == SIG_IGN) std::signal(number, SIG_IGN);
    return before;
}

}  // namespace

InterruptWatch::InterruptWatch() : onInterrupt(takeOver(SIGINT)), onTerminate(takeOver(SIGTERM)) {}

InterruptWatch::~InterruptWatch() {
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onTerminate);
}

void InterruptWatch::check() const {
    if (received != 0) throw Interrupted(received);
}

}  // namespace brivok
