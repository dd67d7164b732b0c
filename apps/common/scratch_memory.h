#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace brivok {

/// A large piece of memory for a while, with unspecified contents at first. Given a folder, it is a
/// file there, mapped into memory: the system then keeps in memory what is in use, as far as there
/// is room, and the rest in the file. The file has no name, so nothing is left of it when the
/// program ends, however that happens.
class ScratchMemory {
public:
    /// Without a folder (an empty path) the memory is the system's. With one, the whole space on
    /// disk is reserved at once. Throws AppError if memory or space is refused.
    ScratchMemory(std::size_t itsBytes, const std::filesystem::path& folder);
    ScratchMemory(const ScratchMemory&) = delete;
    ScratchMemory& operator=(const ScratchMemory&) = delete;
    ~ScratchMemory();

    [[nodiscard]] void* data() const { return memory; }

private:
    std::size_t bytes;
    void* memory = nullptr;
};

}  // namespace brivok
