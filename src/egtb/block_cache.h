#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "egtb/datacomp.h"

namespace brivok {

/// Bytes of a chunk, the unit in which tables are read and decoded.
inline constexpr std::uint32_t ChunkBytes = 8192;

/// Returned by a read when there is no value; also a broken entry on the wide scale.
inline constexpr std::int32_t NoValue = 32767;

/// A cache block, linked into the use list and into its bucket's chain.
struct CacheBlock {
    std::int32_t tableId;
    std::uint32_t side;    ///< of the table, 0 or 1
    std::uint32_t chunk;   ///< index within the side
    std::uint32_t length;  ///< valid bytes in `data`; the rest is meaningless
    CacheBlock* older;     ///< towards the least recently used; next block on the free list
    CacheBlock* newer;     ///< towards the most recently used
    CacheBlock* bucketNext;
    CacheBlock* bucketPrev;  ///< null at the head of the chain
    std::uint8_t* data;      ///< ChunkBytes bytes in the cache's memory
};

/// The most recently used chunks of all tables, each found through a small hash in its table. Holds
/// a fixed number of blocks and replaces the least recently used one. InitCache() allocates all
/// memory.
class BlockCache {
public:
    /// Replaces the cache by an empty one with a budget of `bytes` and closes all files. False if
    /// the budget is too small for even the headers or memory is refused. The cache then has no
    /// blocks, as with any budget below one block.
    [[nodiscard]] bool InitCache(std::uint32_t bytes);

    /// Closes all files and drops all chunks.
    void ResetCache();

    /// The byte at `offset` (below ChunkBytes) of a chunk, sign-extended. `side` is 0 or 1, as in
    /// the files. Loads the chunk if necessary. NoValue if it cannot be loaded or the file ends
    /// before that byte. A file that fails is treated as absent from then on.
    [[nodiscard]] std::int32_t ReadCacheByte(int tableId, unsigned side, std::uint32_t chunk,
                                             std::uint32_t offset);

    /// 0 before InitCache().
    [[nodiscard]] std::uint32_t blockCount() const { return count; }

private:
    [[nodiscard]] CacheBlock* find(int tableId, unsigned side, std::uint32_t chunk);
    [[nodiscard]] CacheBlock* load(int tableId, unsigned side, std::uint32_t chunk);
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

extern BlockCache blockCache;

}  // namespace brivok
