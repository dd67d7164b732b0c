#include "shell/modern/memory_spread.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <memory>

#include "shell/base/settings.h"

namespace brivok {

HashSizes spreadMemory(std::uint32_t megabytes, const HashSizes& most) {
    constexpr std::uint32_t Tables = 3;
    HashSizes sizes;
    std::uint32_t left = std::max(megabytes, Tables);
    sizes.main = std::min(std::bit_floor(left - 2), most.main);
    left -= sizes.main;
    sizes.evaluations = std::min({std::bit_floor(left - 1), sizes.main, most.evaluations});
    left -= sizes.evaluations;
    sizes.pawns = std::min({std::bit_floor(left), sizes.main, most.pawns});
    return sizes;
}

bool isMemoryGranted(std::uint32_t megabytes) {
    const std::unique_ptr<void, decltype(&std::free)> block(
        std::malloc(std::size_t{megabytes} * Megabyte), &std::free);
    // Without somebody to look at it, a compiler may leave the allocation out.
    void* const volatile address = block.get();
    return address != nullptr;
}

}  // namespace brivok
