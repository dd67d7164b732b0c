#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "../common/app_error.h"
#include "egtb/descriptors.h"

namespace brivok::tables {

[[nodiscard]] inline const TablebaseDescriptor& descriptorOf(int id) {
    return tablebaseDescriptors[static_cast<std::size_t>(id)];
}
[[nodiscard]] inline bool isSameForBoth(int id) {
    return (descriptorOf(id).flags & SameForBoth) != 0;
}
/// Files that a table consists of.
[[nodiscard]] inline unsigned filesOf(int id) { return isSameForBoth(id) ? 1 : 2; }

/// "kqk.nbw" with the first side to move, "kqk.nbb" with the second.
[[nodiscard]] std::string tableFileName(int id, unsigned side);

struct TableFileName {
    int id = 0;
    unsigned side = 0;
};

/// The table and side that a file, plain or packed, holds by its name. Throws AppError.
[[nodiscard]] TableFileName parseTableFileName(std::string_view fileName);

/// The entries of a table by side to move, in the order of its files.
using TableBytes = std::array<std::vector<std::uint8_t>, 2>;

/// The tables of a folder, in memory from their first use.
class TableStore {
public:
    explicit TableStore(std::filesystem::path itsFolder) : folder(std::move(itsFolder)) {}

    /// The file of a side, plain or packed; empty if there is none.
    [[nodiscard]] std::filesystem::path find(int id, unsigned side) const;

    /// All files of the table are there.
    [[nodiscard]] bool has(int id) const;

    /// At least one file is there.
    [[nodiscard]] bool hasAny(int id) const;

    /// Throws AppError for a file that is missing, unreadable or of the wrong length.
    [[nodiscard]] const TableBytes& table(int id);

    /// Makes these the entries of the table, in memory only.
    void put(int id, TableBytes bytes) { loaded.insert_or_assign(id, std::move(bytes)); }

    /// Writes the files of a table that is in memory, in place of those that are there.
    void save(int id);

    /// Packs the plain files of a table and removes them.
    void pack(int id, unsigned threads) const;

    /// Forgets the tables that are not listed.
    void keepOnly(const std::vector<int>& ids);

private:
    std::filesystem::path folder;
    std::map<int, TableBytes> loaded;
};

/// The name of a packed file: that of the plain one with ".emd".
[[nodiscard]] std::filesystem::path packedName(std::filesystem::path plain);

/// It ends in ".emd".
[[nodiscard]] bool isPackedName(const std::filesystem::path& file);

/// The name without ".emd". Throws AppError when it does not end so.
[[nodiscard]] std::filesystem::path plainName(const std::filesystem::path& packed);

/// The entries of a file, packed if its name says so. Throws AppError, also for a file with more
/// entries than `most`, whatever size it claims or unpacks to.
[[nodiscard]] std::vector<std::uint8_t> readTableFile(const std::filesystem::path& path,
                                                      std::uint64_t most);

}  // namespace brivok::tables
