#include "egtb/table_files.h"

#include <algorithm>

namespace brivok {

std::array<TableSides, TableCount> tableSides;
std::unique_ptr<DecodeScratch> decodeScratch;

std::size_t partCount(const TablebaseDescriptor& table, unsigned side) {
    if ((table.flags & Split) == 0) return 1;
    const std::uint64_t entries = table.size[side];
    const std::uint64_t bytes = (table.flags & TwoByte) != 0 ? entries * 2 : entries;
    return std::min<std::size_t>((bytes >> PartBytesLog) + 1, MaxParts);
}

TableFile openTableFile(const std::string& path) {
    TableFile file(std::fopen(path.c_str(), "rb"));
    if (file != nullptr) std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return file;
}

void CloseTableFiles() {
    for (const TableSides& sides : tableSides) {
        for (const std::unique_ptr<TableSide>& side : sides) {
            if (side == nullptr) continue;
            for (TablePart& part : side->parts) part.file.reset();
        }
    }
}

}  // namespace brivok
