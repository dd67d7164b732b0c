#pragma once

#include <cassert>
#include <cstdint>
#include <vector>

namespace brivok::tables {

/// Appends bits to bytes, most significant bit first.
class BitWriter {
public:
    explicit BitWriter(std::vector<std::uint8_t>& itsBytes) : bytes(itsBytes) {}

    /// The low `width` bits of `value`, at most 32; the others are 0.
    void put(std::uint32_t value, unsigned width) {
        assert(width <= 32 && (width == 32 || value >> width == 0));
        waiting = waiting << width | value;
        count += width;
        while (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::uint8_t>(waiting >> count));
        }
    }

    /// Fills the last byte with zeros.
    void finish() {
        if (count != 0) put(0, 8 - count);
    }

private:
    std::vector<std::uint8_t>& bytes;
    std::uint64_t waiting = 0;  ///< the low `count` bits are still to be written
    unsigned count = 0;         ///< 0 .. 7 between calls
};

}  // namespace brivok::tables
