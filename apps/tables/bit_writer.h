#pragma once

#include <cassert>
#include <cstdint>
#include <vector>

namespace brivok::tables {

/// Appends bits to bytes, most significant bit first.
class BitWriter {
public:
    explicit BitWriter(std::vector<std::uint8_t>& itsBytes) : bytes(itsBytes) {}

    /// Appends the low `width` (at most 32) bits of `value`; the other bits must be 0.
    void put(std::uint32_t value, unsigned width) {
        assert(width <= 32 && (width == 32 || value >> width == 0));
        waiting = waiting << width | value;
        count += width;
        while (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::uint8_t>(waiting >> count));
        }
    }

    /// Pads the last byte with zeros.
    void finish() {
        if (count != 0) put(0, 8 - count);
    }

private:
    std::vector<std::uint8_t>& bytes;
    std::uint64_t waiting = 0;  ///< the low `count` bits are not yet written
    unsigned count = 0;         ///< 0 to 7 between calls
};

}  // namespace brivok::tables
