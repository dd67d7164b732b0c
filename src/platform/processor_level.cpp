#include "platform/processor_level.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/platform.h"

#ifdef __x86_64__
#include <cpuid.h>
#endif

namespace brivok {

namespace {

struct Level {
    std::string_view name;
    bool (*isThere)();  ///< whether processor and system have it
};

#ifdef __x86_64__

/// Whether the third register that the cpuid instruction fills has all of these bits.
bool hasBits(unsigned leaf, unsigned wanted) {
    unsigned a = 0, b = 0, c = 0, d = 0;
    return __get_cpuid(leaf, &a, &b, &c, &d) != 0 && (c & wanted) == wanted;
}

/// The compiler's question for AVX2 includes whether the system keeps its registers. Not every
/// compiler knows how to ask for the features of the last two lines.
bool hasVersion3() {
    return __builtin_cpu_supports("popcnt") != 0 && __builtin_cpu_supports("sse4.2") != 0 &&
           __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0 &&
           __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0 &&
           hasBits(1, bit_CMPXCHG16B | bit_MOVBE | bit_F16C) &&
           hasBits(0x80000001, bit_LAHF_LM | bit_LZCNT);
}

/// Those that CMake may make programs for, from high to low.
constexpr std::array Levels = {Level{"x86-64-v3", hasVersion3}};

#else

constexpr std::array<Level, 0> Levels{};

#endif

bool isMade(std::string_view level) {
    return std::string_view(BRIVOK_LEVELS).find(level) != std::string_view::npos;
}

}  // namespace

const char* ownLevel() { return BRIVOK_CPU; }

void continueAtBestLevel(char** arguments) {
    const char* const variable = std::getenv("BRIVOK_CPU");
    const std::string_view wanted = variable == nullptr ? "" : variable;
    if (wanted == ownLevel()) return;
    for (const Level& level : Levels) {
        if (level.name == ownLevel()) break;
        if (isMade(level.name) && (wanted.empty() || wanted == level.name) && level.isThere()) {
            platform().continueAs(std::string("-").append(level.name), arguments);
        }
    }
    if (!wanted.empty()) {
        std::fprintf(stderr, "BRIVOK_CPU: the level %s cannot be had; this is %s\n", variable,
                     ownLevel());
    }
}

}  // namespace brivok
