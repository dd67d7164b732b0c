#include "progress_line.h"

#include <cstdio>

#include "platform/platform.h"

namespace brivok {

namespace {

constexpr std::uint64_t UpdateInterval = 250;  // milliseconds

}  // namespace

ProgressLine::ProgressLine()
    : active(platform().errorIsTerminal()), lastShown(platform().milliseconds()) {}

bool ProgressLine::isDue() const {
    return active && platform().milliseconds() - lastShown >= UpdateInterval;
}

void ProgressLine::show(const std::string& text) {
    if (!active) return;
    clear();
    std::fprintf(stderr, "%s", text.c_str());
    std::fflush(stderr);
    shown = true;
    lastShown = platform().milliseconds();
}

void ProgressLine::clear() {
    if (shown) std::fprintf(stderr, "\r%-70s\r", "");
    shown = false;
}

}  // namespace brivok
