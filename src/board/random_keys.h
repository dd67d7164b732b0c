#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace brivok {

/// Generates the random keys. Book files are addressed by position keys, so this sequence is part
/// of the book format.
class RandomKeys {
public:
    explicit RandomKeys(std::uint64_t seed) { seedRandom(seed); }

    /// Restarts the sequence from a seed.
    void seedRandom(std::uint64_t value) {
        for (auto& word : randomState) {
            word = value;
            value = std::rotl(value, 5) + 97;
        }
        a = 0;
        b = 10;
        c = 21;
    }

    [[nodiscard]] std::uint64_t nextRandom() {
        const std::uint64_t value = std::rotl(randomState[a], 5) + std::rotl(randomState[b], 3) +
                                    std::rotr(randomState[c], 11);
        randomState[a] = value;
        a = stepDown(a);
        b = stepDown(b);
        c = stepDown(c);
        return value;
    }

private:
    static constexpr unsigned Words = 27;
    [[nodiscard]] static unsigned stepDown(unsigned index) {
        return index == 0 ? Words - 1 : index - 1;
    }

    std::array<std::uint64_t, Words> randomState{};
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
};

}  // namespace brivok
