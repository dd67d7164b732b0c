#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

namespace brivok {

/// An owned array of plain records, aligned to cache lines and zeroed when allocated. Unlike a
/// vector it returns false when memory is refused, so the caller can decide what to do.
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
        const std::size_t bytes = (count * sizeof(Record) + CacheLine - 1) / CacheLine * CacheLine;
        records.reset(static_cast<Record*>(std::aligned_alloc(CacheLine, bytes)));
        if (records == nullptr) return false;
        length = count;
        clear();
        return true;
    }

    void clear() {
        if (length != 0) std::memset(static_cast<void*>(records.get()), 0, length * sizeof(Record));
    }

    /// The index is not checked.
    [[nodiscard]] Record& operator[](std::size_t index) { return records.get()[index]; }
    /// The index is not checked.
    [[nodiscard]] const Record& operator[](std::size_t index) const { return records.get()[index]; }
    [[nodiscard]] std::size_t size() const { return length; }

private:
    static constexpr std::size_t CacheLine = 64;
    struct Free {
        void operator()(Record* memory) const { std::free(memory); }
    };
    std::unique_ptr<Record, Free> records;
    std::size_t length = 0;
};

}  // namespace brivok
