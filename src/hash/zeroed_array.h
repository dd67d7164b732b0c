#pragma once

#include <cassert>
#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

#include "platform/platform.h"

namespace brivok {

/// An owned array of plain records, aligned to cache lines. New memory comes zeroed from the
/// system, so allocating does not touch it. Unlike a vector it returns false when memory is
/// refused, so the caller can decide what to do.
template <class Record>
class ZeroedArray {
    static_assert(std::is_trivially_copyable_v<Record> && std::is_trivially_destructible_v<Record>);

public:
    /// Replaces the array by `count` zeroed records, reusing the memory if the size is the same.
    /// False if memory is refused.
    [[nodiscard]] bool allocate(std::size_t count) {
        if (count == length) {
            clear();
            return true;
        }
        records.reset();
        length = 0;
        const std::size_t bytes = count * sizeof(Record);
        records = {static_cast<Record*>(platform().allocateZeroed(bytes)), Free{bytes}};
        if (records == nullptr) return false;
        length = count;
        return true;
    }

    void clear() {
        if (length != 0) std::memset(static_cast<void*>(records.get()), 0, length * sizeof(Record));
    }

    [[nodiscard]] Record& operator[](std::size_t index) {
        assert(index < length);
        return records.get()[index];
    }
    [[nodiscard]] const Record& operator[](std::size_t index) const {
        assert(index < length);
        return records.get()[index];
    }
    [[nodiscard]] std::size_t size() const { return length; }

private:
    struct Free {
        std::size_t bytes = 0;
        void operator()(Record* memory) const { platform().freeZeroed(memory, bytes); }
    };
    std::unique_ptr<Record, Free> records;
    std::size_t length = 0;
};

}  // namespace brivok
