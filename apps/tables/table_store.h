#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "../common/app_error.h"
#include "egtb/descriptors.h"

namespace brivok::tables {

[[nodiscard]] inline bool isSameForBoth(int id) {
    return (descriptorOf(id).flags & SameForBoth) != 0;
}
/// Whether the entries have two bytes.
[[nodiscard]] inline bool isWide(int id) { return (descriptorOf(id).flags & TwoByte) != 0; }
/// Number of files of a table.
[[nodiscard]] inline unsigned filesOf(int id) { return isSameForBoth(id) ? 1 : 2; }

/// Whether the entries for one side to move are in several files, each but the last of PartBytes.
[[nodiscard]] inline bool isSplit(int id) { return (descriptorOf(id).flags & Split) != 0; }
inline constexpr std::uint64_t PartBytes = std::uint64_t{1} << 31;

/// Bytes of the entries for one side to move.
[[nodiscard]] inline std::uint64_t bytesOf(int id, unsigned side) {
    return descriptorOf(id).size[side] * (isWide(id) ? 2 : 1);
}

/// Number of files for one side to move.
[[nodiscard]] unsigned partsOf(int id, unsigned side);

/// "kqk.nbw" with the first side to move, "kqk.nbb" with the second. A part of a file that is split
/// is "kqbkrn.0.nbw" and so on.
[[nodiscard]] std::string tableFileName(int id, unsigned side, unsigned part = 0);

struct TableFileName {
    int id = 0;
    unsigned side = 0;
};

/// The table and side that a file, plain or packed, holds according to its name; none if that is
/// not the name of a table's file.
[[nodiscard]] std::optional<TableFileName> tableFileOf(std::string_view fileName);

/// The same. Throws AppError if there is none.
[[nodiscard]] TableFileName parseTableFileName(std::string_view fileName);

/// The entries of a table by side to move, in file order.
using TableBytes = std::array<std::vector<std::uint8_t>, 2>;

/// The tables of a folder. Each file is kept in memory from its first use.
class TableStore {
public:
    explicit TableStore(std::filesystem::path itsFolder) : folder(std::move(itsFolder)) {}

    /// The file of a side, or a part of it, plain or packed; empty if there is none.
    [[nodiscard]] std::filesystem::path find(int id, unsigned side, unsigned part = 0) const;

    /// Whether all files of the table exist.
    [[nodiscard]] bool has(int id) const;

    /// Whether at least one file exists.
    [[nodiscard]] bool hasAny(int id) const;

    /// The bytes of the entries for a side to move, or of the only file. Throws AppError if it is
    /// missing, unreadable, of the wrong length, or not the one that the table's record tells of.
    [[nodiscard]] const std::vector<std::uint8_t>& entries(int id, unsigned side);

    /// Sets the entries of the table, in memory only.
    void put(int id, TableBytes bytes);

    /// Takes it that the table is as recorded.
    void trust(int id);

    /// Packs the plain files of a table. `progress` receives percentages.
    void pack(int id, unsigned threads, const std::function<void(unsigned)>& progress) const;

    /// Removes the plain files of a table that are packed.
    void removePlain(int id) const;

    /// Drops the tables that are not listed from memory.
    void keepOnly(const std::vector<int>& ids);

private:
    [[nodiscard]] std::vector<std::uint8_t> read(int id, unsigned side) const;
    void readPart(int id, unsigned side, unsigned part, std::vector<std::uint8_t>& bytes) const;

    std::filesystem::path folder;
    std::map<std::pair<int, unsigned>, std::vector<std::uint8_t>> loaded;  ///< by id and file
    std::set<std::pair<int, unsigned>> trusted;  ///< made here, or found to be as recorded
};

/// The name of a packed file: the plain file's name plus ".emd".
[[nodiscard]] std::filesystem::path packedName(std::filesystem::path plain);

/// Whether the name ends in ".emd".
[[nodiscard]] bool isPackedName(const std::filesystem::path& file);

/// The name without ".emd". Throws AppError if it does not end so.
[[nodiscard]] std::filesystem::path plainName(const std::filesystem::path& packed);

/// The entries of a file, packed if its name says so. Throws AppError, also if the file has more
/// than `most` bytes, whatever size it claims or unpacks to.
[[nodiscard]] std::vector<std::uint8_t> readTableFile(const std::filesystem::path& path,
                                                      std::uint64_t most);

}  // namespace brivok::tables
