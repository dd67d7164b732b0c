#include "progress.h"

#include <cstdio>

#include "platform/platform.h"

namespace brivok {

namespace {

constexpr std::uint64_t CallsBetweenLooks = 64;
constexpr std::uint64_t ShowEvery = 250;  // milliseconds

}  // namespace

Progress::Progress()
    : active(platform().errorIsTerminal()), start(platform().milliseconds()), lastShown(start) {}

Progress::~Progress() { clear(); }

void Progress::games(std::uint64_t count, std::uint64_t bytesDone, std::uint64_t bytesInAll) {
    if (!active || ++calls % CallsBetweenLooks != 0) return;
    const std::uint64_t now = platform().milliseconds();
    if (now - lastShown < ShowEvery) return;
    lastShown = now;
    shown = true;
    std::fprintf(stderr, "\r%12llu games %10llu games/s", static_cast<unsigned long long>(count),
                 static_cast<unsigned long long>(count * 1000 / (now - start)));
    if (bytesInAll > 0) {
        std::fprintf(stderr, "%5llu %%",
                     static_cast<unsigned long long>(bytesDone * 100 / bytesInAll));
    }
}

void Progress::clear() {
    if (shown) std::fprintf(stderr, "\r%60s\r", "");
    shown = false;
}

}  // namespace brivok
