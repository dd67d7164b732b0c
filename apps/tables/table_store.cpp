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

void appendTableFile(const std::filesystem::path& path, std::uint64_t most,
                     std::vector<std::uint8_t>& bytes) {
    forEachPiece(path, most,
                 [&](ByteSpan piece) { bytes.insert(bytes.end(), piece.begin(), piece.end()); });
}

}  // namespace

unsigned partsOf(int id, unsigned side) {
    return isSplit(id) ? static_cast<unsigned>(bytesOf(id, side) / PartBytes) + 1 : 1;
}

std::string tableFileName(int id, unsigned side, unsigned part) {
    std::string name(descriptorOf(id).signature());
    // Ten digits, then letters.
    if (isSplit(id)) {
        name += '.';
        name += static_cast<char>(part < 10 ? '0' + part : 'a' + (part - 10));
    }
    return name + (side == 0 ? ".nbw" : ".nbb");
}

std::optional<TableFileName> tableFileOf(std::string_view fileName) {
    for (int id = 1; id < TableCount && descriptorOf(id).signature().size() <= MaxMen; ++id) {
        for (unsigned side = 0; side < filesOf(id); ++side) {
            for (unsigned part = 0; part < partsOf(id, side); ++part) {
                const std::string plain = tableFileName(id, side, part);
                if (fileName == plain || fileName == packedName(plain)) {
                    return TableFileName{id, side};
                }
            }
        }
    }
    return std::nullopt;
}

TableFileName parseTableFileName(std::string_view fileName) {
    const auto name = tableFileOf(fileName);
    if (!name) fail(fileName, "not the name of a table of 3 to 6 men");
    return *name;
}

std::filesystem::path TableStore::find(int id, unsigned side, unsigned part) const {
    std::filesystem::path path = folder / tableFileName(id, side, part);
    if (std::filesystem::exists(path)) return path;
    path = packedName(path);
    return std::filesystem::exists(path) ? path : std::filesystem::path();
}

bool TableStore::has(int id) const {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        for (unsigned part = 0; part < partsOf(id, side); ++part) {
            if (find(id, side, part).empty()) return false;
        }
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
    std::vector<std::uint8_t> bytes;
    bytes.reserve(bytesOf(id, side));
    for (unsigned part = 0; part < partsOf(id, side); ++part) readPart(id, side, part, bytes);
    return bytes;
}

/// Appends the entries of a part.
void TableStore::readPart(int id, unsigned side, unsigned part,
                          std::vector<std::uint8_t>& bytes) const {
    const std::filesystem::path path = find(id, side, part);
    if (path.empty()) fail(folder / tableFileName(id, side, part), "no such file");
    const std::size_t before = bytes.size();
    const std::uint64_t rest = bytesOf(id, side) - before;
    const std::uint64_t size = isSplit(id) ? std::min(rest, PartBytes) : rest;
    try {
        appendTableFile(path, size, bytes);
        if (bytes.size() - before == size) return;
        const unsigned each = isWide(id) ? 2 : 1;
        fail(path, std::to_string((bytes.size() - before) / each) + " entries instead of " +
                       std::to_string(size / each));
    } catch (const AppError&) {
        // Another run may just have packed it.
        if (isPackedName(path) || std::filesystem::exists(path)) throw;
    }
    bytes.resize(before);
    readPart(id, side, part, bytes);
}

void TableStore::put(int id, TableBytes bytes) {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        loaded.insert_or_assign({id, side}, std::move(bytes[side]));
        trusted.insert({id, side});
    }
}

void TableStore::trust(int id) {
    for (unsigned side = 0; side < filesOf(id); ++side) trusted.insert({id, side});
}

void TableStore::pack(int id, unsigned threads,
                      const std::function<void(unsigned)>& progress) const {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        const unsigned parts = partsOf(id, side);
        for (unsigned part = 0; part < parts; ++part) {
            const std::filesystem::path plain = folder / tableFileName(id, side, part);
            if (!std::filesystem::exists(plain)) continue;
            const auto tell = [&](std::uint64_t done, std::uint64_t total) {
                const std::uint64_t before = std::uint64_t{side} * parts + part;
                progress(static_cast<unsigned>((100 * before + 100 * done / total) /
                                               (std::uint64_t{parts} * filesOf(id))));
            };
            packFile(plain, packedName(plain), {.threads = threads, .progress = tell});
        }
    }
}

void TableStore::removePlain(int id) const {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        for (unsigned part = 0; part < partsOf(id, side); ++part) {
            const std::filesystem::path plain = folder / tableFileName(id, side, part);
            if (std::filesystem::exists(packedName(plain))) std::filesystem::remove(plain);
        }
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
    appendTableFile(path, most, bytes);
    return bytes;
}

}  // namespace brivok::tables
