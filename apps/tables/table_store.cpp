#include "table_store.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "../common/files.h"
#include "../common/sha256.h"
#include "file_pieces.h"
#include "material.h"
#include "pack.h"
#include "table_record.h"

namespace brivok::tables {
namespace {

constexpr std::string_view PackedSuffix = ".emd";

}  // namespace

std::string tableFileName(int id, unsigned side) {
    return std::string(descriptorOf(id).signature()) + (side == 0 ? ".nbw" : ".nbb");
}

std::optional<TableFileName> tableFileOf(std::string_view fileName) {
    for (int id = 1; id < TableCount && descriptorOf(id).signature().size() <= MaxMen; ++id) {
        for (unsigned side = 0; side < filesOf(id); ++side) {
            const std::string plain = tableFileName(id, side);
            if (fileName == plain || fileName == packedName(plain)) {
                return TableFileName{id, side};
            }
        }
    }
    return std::nullopt;
}

TableFileName parseTableFileName(std::string_view fileName) {
    const auto name = tableFileOf(fileName);
    if (!name) fail(fileName, "not the name of a table of 3 to 5 men");
    return *name;
}

std::filesystem::path TableStore::find(int id, unsigned side) const {
    std::filesystem::path path = folder / tableFileName(id, side);
    if (std::filesystem::exists(path)) return path;
    path = packedName(path);
    return std::filesystem::exists(path) ? path : std::filesystem::path();
}

bool TableStore::has(int id) const {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        if (find(id, side).empty()) return false;
    }
    return true;
}

bool TableStore::hasAny(int id) const { return !find(id, 0).empty() || !find(id, 1).empty(); }

const std::vector<std::uint8_t>& TableStore::entries(int id, unsigned side) {
    if (isSameForBoth(id)) side = 0;
    const auto key = std::make_pair(id, side);
    if (const auto found = loaded.find(key); found != loaded.end()) return found->second;
    std::vector<std::uint8_t> bytes = read(id, side);
    if (!trusted.contains(key)) {
        requireRecorded(find(id, side), sha256Of(bytes));
        trusted.insert(key);
    }
    return loaded.emplace(key, std::move(bytes)).first->second;
}

std::vector<std::uint8_t> TableStore::read(int id, unsigned side) const {
    const std::filesystem::path path = find(id, side);
    if (path.empty()) {
        fail(folder / tableFileName(id, side), "no such file");
    }
    const std::uint64_t size = descriptorOf(id).size[side];
    try {
        std::vector<std::uint8_t> bytes = readTableFile(path, size);
        if (bytes.size() == size) return bytes;
        fail(path, std::to_string(bytes.size()) + " entries instead of " + std::to_string(size));
    } catch (const AppError&) {
        // Another run may just have packed it.
        if (isPackedName(path) || std::filesystem::exists(path)) throw;
    }
    return read(id, side);
}

void TableStore::put(int id, TableBytes bytes) {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        loaded.insert_or_assign({id, side}, std::move(bytes[side]));
        trusted.insert({id, side});
    }
}

void TableStore::save(int id) {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        NewFile file(folder / tableFileName(id, side));
        file.write(entries(id, side));
        file.finish();
        // A packed file that was found wrong.
        std::filesystem::remove(packedName(folder / tableFileName(id, side)));
    }
}

void TableStore::trust(int id) {
    for (unsigned side = 0; side < filesOf(id); ++side) trusted.insert({id, side});
}

void TableStore::pack(int id, unsigned threads,
                      const std::function<void(unsigned)>& progress) const {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        const std::filesystem::path plain = folder / tableFileName(id, side);
        if (!std::filesystem::exists(plain)) continue;
        packFile(
            plain, packedName(plain),
            {.threads = threads, .progress = [&](std::uint64_t done, std::uint64_t total) {
                 progress(static_cast<unsigned>((100 * side + 100 * done / total) / filesOf(id)));
             }});
    }
}

void TableStore::removePlain(int id) const {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        const std::filesystem::path plain = folder / tableFileName(id, side);
        if (std::filesystem::exists(packedName(plain))) std::filesystem::remove(plain);
    }
}

void TableStore::keepOnly(const std::vector<int>& ids) {
    std::erase_if(loaded, [&](const auto& entry) {
        return std::find(ids.begin(), ids.end(), entry.first.first) == ids.end();
    });
}

std::filesystem::path packedName(std::filesystem::path plain) { return plain += PackedSuffix; }

bool isPackedName(const std::filesystem::path& file) { return file.extension() == PackedSuffix; }

std::filesystem::path plainName(const std::filesystem::path& packed) {
    if (!isPackedName(packed)) fail(packed, "not the name of a packed table");
    return std::filesystem::path(packed).replace_extension();
}

std::vector<std::uint8_t> readTableFile(const std::filesystem::path& path, std::uint64_t most) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(most);
    forEachPiece(path, most,
                 [&](ByteSpan piece) { bytes.insert(bytes.end(), piece.begin(), piece.end()); });
    return bytes;
}

}  // namespace brivok::tables
