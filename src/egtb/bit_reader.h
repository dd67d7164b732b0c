#pragma once

#include <cstdint>
#include <span>

namespace brivok {

/// Reads a stream of bits, each byte from its most significant bit on, without ever touching
/// memory outside of it. Behind the end all bits are 0; overrun() tells that some were taken.
class BitReader {
public:
    static constexpr int RefilledBits = 56;  ///< what refill() provides for at least

    /// Begins at the first bit. The bytes are not copied.
    explicit BitReader(std::span<const std::uint8_t> bytes)
        : next(bytes.data()), end(bytes.data() + bytes.size()) {}

    /// Makes the next RefilledBits bits available to peek() and skip().
    void refill() {
        if (end - next >= 8) [[likely]] {
            // Bits below `count` are those of the bytes at `next`: to set them again does no harm.
            buffer |= load() >> count;
            next += (63 - count) >> 3;
            count |= 56;
            return;
        }
        for (; count <= 56 && next != end; count += 8) {
            buffer |= std::uint64_t{*next++} << (56 - count);
        }
    }

    /// The next `bits` bits, 0 .. 32, as a number.
    [[nodiscard]] std::uint32_t peek(int bits) const {
        return static_cast<std::uint32_t>(buffer >> 1U >> (63 - bits));
    }

    /// Drops `bits` bits, which must be available.
    void skip(int bits) {
        buffer <<= bits;
        count -= bits;
    }

    /// Takes `bits` bits of the available ones.
    [[nodiscard]] std::uint32_t take(int bits) {
        const std::uint32_t number = peek(bits);
        skip(bits);
        return number;
    }

    /// take() after a refill.
    [[nodiscard]] std::uint32_t read(int bits) {
        refill();
        return take(bits);
    }

    /// More bits have been taken than there were.
    [[nodiscard]] bool overrun() const { return count < 0; }

private:
    /// Eight bytes at `next`; compilers make one load of it.
    [[nodiscard]] std::uint64_t load() const {
        std::uint64_t word = 0;
        for (int i = 0; i < 8; ++i) word = word << 8U | next[i];
        return word;
    }

    const std::uint8_t* next;
    const std::uint8_t* end;
    std::uint64_t buffer = 0;  ///< the next bits, from the top down
    int count = 0;             ///< how many; negative when the stream has ended before
};

}  // namespace brivok
