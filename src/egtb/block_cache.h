#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "egtb/datacomp.h"

namespace brivok {

/// Bytes of a chunk, the part of a table that is read and decoded at a time.
inline constexpr std::uint32_t ChunkBytes = 8192;

/// What a read gives when there is nothing to be had; also the value of a broken entry on the
/// wide scale.
inline constexpr std::int32_t NoValue = 32767;

/// A block of the cache, with its place in the use list and in the chain of its bucket.
struct CacheBlock {
    std::int32_t tableId;    ///< of the table
    std::int32_t side;       ///< of the files, 0 or 1
    std::uint32_t chunk;     ///< number of the chunk within the side
    std::uint32_t length;    ///< bytes of `data` that the file has; the rest means nothing
    CacheBlock* older;       ///< towards the least recently used; on the free list the next one
    CacheBlock* newer;       ///< towards the most recently used
    CacheBlock* bucketNext;  ///< the next in the chain
    CacheBlock* bucketPrev;  ///< none at the head of the chain
    std::uint8_t* data;      ///< ChunkBytes bytes in the memory of the cache
};

/// The chunks of all tables that were read last, each found by a small hash of its table. Holds a
/// fixed number of blocks and lets the one go that has not been used for the longest time. All
/// memory is taken by InitCache().
class BlockCache {
public:
    /// Makes the cache anew for a budget of `bytes`, empty, with all files closed. False when the
    /// budget has no room for the least of headers or the memory is refused; there are no blocks
    /// then, nor with a budget below one block.
    [[nodiscard]] bool InitCache(std::uint32_t bytes);

    /// Closes all files and forgets all chunks.
    void ResetCache();

    /// The byte at `offset` (below ChunkBytes) of a chunk, sign-extended; `side` is the one of the
    /// files. Reads the chunk in when it is not there. NoValue when it can't be had, or when the
    /// file ends before that byte. A file that fails counts as absent from then on.
    [[nodiscard]] std::int32_t ReadCacheByte(int tableId, int side, std::uint32_t chunk,
                                             std::uint32_t offset);

    /// The number of blocks; 0 before InitCache().
    [[nodiscard]] std::uint32_t blockCount() const { return count; }

private:
    [[nodiscard]] CacheBlock* find(int tableId, int side, std::uint32_t chunk);
    [[nodiscard]] CacheBlock* load(int tableId, int side, std::uint32_t chunk);
    [[nodiscard]] CacheBlock* takeBlock();
    void appendToUseList(CacheBlock& block);
    void removeFromUseList(CacheBlock& block);

    struct Free {
        void operator()(std::byte* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<std::byte, Free> memory;  ///< the headers, then the data areas
    std::uint32_t count = 0;
    CacheBlock* blocks = nullptr;
    CacheBlock* mostRecent = nullptr;
    CacheBlock* leastRecent = nullptr;
    CacheBlock* freeList = nullptr;
};

/// The one cache of the engine.
extern BlockCache blockCache;

}  // namespace brivok
