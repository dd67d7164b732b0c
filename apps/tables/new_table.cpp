#include "new_table.h"

#include <algorithm>
#include <string>
#include <utility>

#include "table_store.h"

namespace brivok::tables {

void PartedFile::write(ByteSpan bytes) {
    while (!bytes.empty()) {
        if (room == 0) {
            parts.push_back(std::make_unique<NewFile>(names.at(parts.size())));
            room = partBytes;
        }
        const auto now = static_cast<std::size_t>(std::min<std::uint64_t>(room, bytes.size()));
        parts.back()->write(bytes.first(now));
        bytes = bytes.subspan(now);
        room -= now;
    }
}

void PartedFile::finish() {
    for (std::size_t part = 0; part < parts.size(); ++part) {
        parts[part]->finish();
        std::filesystem::remove(packedName(names[part]));
    }
}

NewTable::NewTable(int itsId, const std::filesystem::path& folder) : id(itsId) {
    for (unsigned side = 0; side < filesOf(id); ++side) {
        std::vector<std::filesystem::path> names;
        for (unsigned part = 0; part < partsOf(id, side); ++part) {
            names.push_back(folder / tableFileName(id, side, part));
        }
        files.emplace_back(std::move(names), isSplit(id) ? PartBytes : ~std::uint64_t{0});
        tallies.emplace_back(id, side);
    }
}

void NewTable::write(unsigned side, ByteSpan bytes) {
    tallies[side].add(bytes);
    files[side].write(bytes);
}

TableRecord NewTable::finish(const Making& making) {
    TableRecord record{.signature = std::string(descriptorOf(id).signature()), .making = making};
    for (unsigned side = 0; side < files.size(); ++side) {
        files[side].finish();
        record.files.push_back(tallies[side].finish());
    }
    return record;
}

}  // namespace brivok::tables
