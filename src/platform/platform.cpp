#include "platform/platform.h"

#include <utility>

namespace brivok {

namespace {

Platform*& inForce() {
    static Platform* now = &systemPlatform();
    return now;
}

}  // namespace

Platform& platform() { return *inForce(); }

Platform& replacePlatform(Platform& other) { return *std::exchange(inForce(), &other); }

}  // namespace brivok
