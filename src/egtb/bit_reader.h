#pragma once

#include <cstdint>
#include <span>

namespace brivok {

/// Reads bits from a byte stream, most significant bit first, and never touches memory outside it.
/// Past the end all bits are 0; overrun() tells whether any of those have been taken.
class BitReader {
public:
    static constexpr int RefilledBits = 56;  ///< least number of bits after refill()

    /// The bytes are not copied.
    explicit BitReader(std::span<const std::uint8_t> bytes)
        : next(bytes.data()), end(bytes.data() + bytes.size()) {}

    /// Makes the next RefilledBits bits available to peek() and skip().
    void refill() {
        if (end - next >= 8) [[likely]] {
            // Bits below `count` already hold the bytes at `next`; setting them again is harmless.
            buffer |= load() >> count;
            next += (63 - count) >> 3;
            count |= 56;
            return;
        }
        for (; count <= 56 && next != end; count += 8) {
            buffer |= std::uint64_t{*next++} << (56 - count);
        }
    }

    /// The next `bits` (0 to 32) bits as a number.
    [[nodiscard]] std::uint32_t peek(unsigned bits) const {
        return static_cast<std::uint32_t>(buffer >> 1U >> (63 - bits));
    }

    /// Drops available bits.
    void skip(unsigned bits) {
        buffer <<= bits;
        count -= static_cast<int>(bits);
    }

    /// Takes available bits.
    [[nodiscard]] std::uint32_t take(unsigned bits) {
        const std::uint32_t number = peek(bits);
        skip(bits);
        return number;
    }

    /// refill() and take().
    [[nodiscard]] std::uint32_t read(unsigned bits) {
        refill();
        return take(bits);
    }

    /// Whether more bits have been taken than there were.
    [[nodiscard]] bool overrun() const { return count < 0; }

private:
    /// Eight bytes at `next`; compilers turn this into one load.
    [[nodiscard]] std::uint64_t load() const {
        std::uint64_t word = 0;
        for (int i = 0; i < 8; ++i) word = word << 8U | next[i];
        return word;
    }

    const std::uint8_t* next;
    const std::uint8_t* end;
    std::uint64_t buffer = 0;  ///< the next bits, from the top down
    int count = 0;             ///< number of valid bits; negative if the stream ended earlier
};

}  // namespace brivok
