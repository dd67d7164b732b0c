#include "egtb/block_cache.h"

#include <algorithm>

#include "egtb/seek.h"
#include "egtb/table_files.h"

namespace brivok {

BlockCache blockCache;

namespace {

/// Bytes budgeted for a block's header. This is not the size of CacheBlock: it fixes how many
/// blocks a given budget yields, on every machine.
constexpr std::uint32_t HeaderBudget = 32;
constexpr std::uint32_t DataBytes = ChunkBytes + DecodeSlack;
constexpr std::uint32_t BlockBudget = HeaderBudget + DataBytes;

/// log2 of the number of chunks in a part of a split table.
constexpr unsigned PartChunksLog = PartBytesLog - 13;
static_assert((ChunkBytes << PartChunksLog) == 1U << PartBytesLog);

CacheBlock*& bucketOf(int tableId, unsigned side, std::uint32_t chunk) {
    return tableSide(tableId, side)->cacheBuckets[chunk % CacheBuckets];
}

CacheBlock*& bucketOf(const CacheBlock& block) {
    return bucketOf(block.tableId, block.side, block.chunk);
}

void putAtHeadOfChain(CacheBlock& block) {
    CacheBlock*& head = bucketOf(block);
    block.bucketPrev = nullptr;
    block.bucketNext = head;
    if (head != nullptr) head->bucketPrev = &block;
    head = &block;
}

void removeFromChain(CacheBlock& block) {
    if (block.bucketNext != nullptr) block.bucketNext->bucketPrev = block.bucketPrev;
    if (block.bucketPrev != nullptr) {
        block.bucketPrev->bucketNext = block.bucketNext;
    } else {
        bucketOf(block) = block.bucketNext;
    }
}

void emptyAllBuckets() {
    for (const TableSides& sides : tableSides) {
        for (const std::unique_ptr<TableSide>& side : sides) {
            if (side != nullptr) side->cacheBuckets.fill(nullptr);
        }
    }
}

bool openPart(TablePart& part) {
    if (part.file != nullptr) return true;
    if (part.fileName.empty()) return false;
    part.file = openTableFile(part.fileName);
    if (part.file == nullptr) {
        // The process may have run out of file handles.
        CloseTableFiles();
        part.file = openTableFile(part.fileName);
    }
    return part.file != nullptr;
}

bool decodeChunk(const TablePart& part, std::uint32_t chunk, CacheBlock& block) {
    if (decodeScratch == nullptr) return false;
    const DatacompFile& decoder = *part.decoder;
    resetScratch(*decodeScratch, block.data);
    if (ReadDatacompBlock(decoder, *decodeScratch, part.file.get(), chunk) !=
            DatacompFailure::None ||
        DecodeDatacompBlock(decoder, *decodeScratch) != DatacompFailure::None) {
        return false;
    }
    const bool last = chunk + 1 == decoder.blockCount;
    block.length = std::min(last ? decoder.lastBlockSize : decoder.blockSize, ChunkBytes);
    return true;
}

/// The last chunk of a file is short; a file that has shrunk may not have it at all.
bool readChunk(const TablePart& part, std::uint32_t chunk, CacheBlock& block) {
    std::FILE* const file = part.file.get();
    if (!seekTo(file, std::uint64_t{chunk} * ChunkBytes)) return false;
    block.length = static_cast<std::uint32_t>(std::fread(block.data, 1, ChunkBytes, file));
    return block.length == ChunkBytes || std::ferror(file) == 0;
}

/// Fills the block with the chunk that its fields name. If that fails, the file is treated as
/// absent.
bool fetch(CacheBlock& block) {
    const bool split = (descriptorOf(block.tableId).flags & Split) != 0;
    const std::uint32_t number = split ? block.chunk >> PartChunksLog : 0;
    if (number >= MaxParts) return false;
    const std::uint32_t chunk = block.chunk - (number << PartChunksLog);
    TablePart& part = tableSide(block.tableId, block.side)->parts[number];
    if (openPart(part) && (part.decoder != nullptr ? decodeChunk(part, chunk, block)
                                                   : readChunk(part, chunk, block))) {
        return true;
    }
    part = TablePart{};
    return false;
}

}  // namespace

bool BlockCache::InitCache(std::uint32_t bytes) {
    CloseTableFiles();
    emptyAllBuckets();
    memory.reset();
    blocks = mostRecent = leastRecent = freeList = nullptr;
    count = 0;
    if (bytes < HeaderBudget) return false;
    const std::uint32_t wanted = bytes / BlockBudget;
    if (wanted == 0) return true;
    memory.reset(static_cast<std::byte*>(
        std::malloc(std::size_t{wanted} * (sizeof(CacheBlock) + DataBytes))));
    if (memory == nullptr) return false;
    count = wanted;
    blocks = reinterpret_cast<CacheBlock*>(memory.get());
    ResetCache();
    return true;
}

void BlockCache::ResetCache() {
    if (count == 0) return;
    CloseTableFiles();
    emptyAllBuckets();
    auto* data = reinterpret_cast<std::uint8_t*>(blocks + count);
    for (std::uint32_t i = 0; i < count; ++i, data += DataBytes) {
        blocks[i] = {};
        blocks[i].data = data;
        blocks[i].older = i + 1 < count ? &blocks[i + 1] : nullptr;
    }
    freeList = blocks;
    mostRecent = leastRecent = nullptr;
}

std::int32_t BlockCache::ReadCacheByte(int tableId, unsigned side, std::uint32_t chunk,
                                       std::uint32_t offset) {
    if (count == 0 || tableSide(tableId, side) == nullptr) return NoValue;
    const CacheBlock* block = find(tableId, side, chunk);
    if (block == nullptr) block = load(tableId, side, chunk);
    if (block == nullptr || offset >= block->length) return NoValue;
    return static_cast<std::int8_t>(block->data[offset]);
}

CacheBlock* BlockCache::find(int tableId, unsigned side, std::uint32_t chunk) {
    CacheBlock* block = bucketOf(tableId, side, chunk);
    while (block != nullptr && block->chunk != chunk) block = block->bucketNext;
    if (block == nullptr) return nullptr;
    if (block != mostRecent) {
        removeFromUseList(*block);
        appendToUseList(*block);
    }
    if (block->bucketPrev != nullptr) {
        removeFromChain(*block);
        putAtHeadOfChain(*block);
    }
    return block;
}

CacheBlock* BlockCache::load(int tableId, unsigned side, std::uint32_t chunk) {
    CacheBlock* const block = takeBlock();
    block->tableId = tableId;
    block->side = side;
    block->chunk = chunk;
    if (!fetch(*block)) {
        block->older = freeList;
        freeList = block;
        return nullptr;
    }
    appendToUseList(*block);
    putAtHeadOfChain(*block);
    return block;
}

/// Takes a free block, or else the least recently used one.
CacheBlock* BlockCache::takeBlock() {
    CacheBlock* block = freeList;
    if (block != nullptr) {
        freeList = block->older;
    } else {
        block = leastRecent;
        removeFromUseList(*block);
        removeFromChain(*block);
    }
    return block;
}

void BlockCache::appendToUseList(CacheBlock& block) {
    block.newer = nullptr;
    block.older = mostRecent;
    (mostRecent != nullptr ? mostRecent->newer : leastRecent) = &block;
    mostRecent = &block;
}

void BlockCache::removeFromUseList(CacheBlock& block) {
    (block.newer != nullptr ? block.newer->older : mostRecent) = block.older;
    (block.older != nullptr ? block.older->newer : leastRecent) = block.newer;
}

}  // namespace brivok
