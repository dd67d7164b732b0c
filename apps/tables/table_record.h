#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "../common/sha256.h"
#include "datacomp_symbols.h"
#include "table_store.h"

/// What is known of a finished table without reading it: a JSON file beside its files, `kqk.json`.
namespace brivok::tables {

/// A position from which the mate takes longest.
struct LongestMate {
    unsigned moves = 0;
    std::uint64_t index = 0;  ///< of the first such entry in the file
    std::string fen;          ///< empty if the entry is no legal position: the file is damaged
};

struct PackedRecord {
    std::uint64_t bytes = 0;
    std::string sha256;
};

/// A file of a table: the entries for one side to move, or for both.
struct FileRecord {
    std::uint64_t entries = 0;
    unsigned entryBytes = 1;
    std::uint64_t wins = 0;
    std::uint64_t draws = 0;
    std::uint64_t losses = 0;
    std::uint64_t withoutValue = 0;         ///< illegal positions, and mates that no entry can hold
    std::vector<std::uint64_t> winsIn{};    ///< by moves to mate; [0] is 0
    std::vector<std::uint64_t> lossesIn{};  ///< by moves to mate; [0] counts mates
    std::optional<LongestMate> longestWin{};  ///< none if there are no wins
    std::optional<LongestMate> longestLoss{};
    std::string sha256;  ///< of the plain file
    std::optional<PackedRecord> packed{};

    [[nodiscard]] std::uint64_t bytes() const { return entries * entryBytes; }
    /// Entries with a value.
    [[nodiscard]] std::uint64_t legal() const { return entries - withoutValue; }
};

/// What it took to make a table.
struct Making {
    double seconds = 0;  ///< by the clock
    double processorSeconds = 0;
    unsigned threads = 0;
    std::uint64_t peakBytes = 0;  ///< of memory
};

struct TableRecord {
    std::string signature;
    std::optional<Making> making{};   ///< none if that was not measured
    std::vector<FileRecord> files{};  ///< by side to move; one for a table with the same men twice
};

/// Counts the entries of a file, which come in order and piece by piece.
class FileTally {
public:
    FileTally(int itsId, unsigned itsSide);

    /// A piece may end within an entry.
    void add(ByteSpan bytes);

    /// The record of the entries so far. Nothing may be added later.
    [[nodiscard]] FileRecord finish();

private:
    struct Count {
        std::uint64_t entries = 0;
        std::uint64_t first = 0;  ///< index
    };

    void count(std::size_t stored) {
        Count& ofValue = counts[stored];
        if (ofValue.entries++ == 0) ofValue.first = entries;
        ++entries;
    }

    int id;
    unsigned side;
    unsigned entryBytes;
    std::vector<Count> counts;  ///< by stored value
    std::uint64_t entries = 0;
    std::optional<std::uint8_t> lowByte;  ///< of an entry whose other byte is yet to come
    Sha256 sum;
};

/// The record of a file's entries.
[[nodiscard]] FileRecord recordOf(int id, unsigned side, ByteSpan bytes);

/// What reading a whole file tells.
struct FileReading {
    FileRecord record;            ///< without what is known of a packed file
    bool blockSumsKnown = false;  ///< in a packed file; they agree then
    bool recorded = false;        ///< as the record beside it tells
};

/// Reads a file, plain or packed. Throws AppError, also for a file of another length, for a part of
/// a table, and for a file that is not as recorded.
[[nodiscard]] FileReading readTable(const std::filesystem::path& path);

/// The record of a table whose entries are in the store, or in its folder.
[[nodiscard]] TableRecord recordOf(int id, TableStore& store, const std::optional<Making>& making);

/// The size and the sum of a packed file.
[[nodiscard]] PackedRecord packedRecordOf(const std::filesystem::path& packed);

/// "kqk.json" in the folder.
[[nodiscard]] std::filesystem::path recordPath(const std::filesystem::path& folder, int id);

/// The record of a table; none if there is no file. Throws AppError if the file is damaged or tells
/// of another table.
[[nodiscard]] std::optional<TableRecord> readRecord(const std::filesystem::path& folder, int id);

/// What the record beside a table file tells of it; none if there is no record, or if the file is
/// no table, or only a part of one, by its name. Throws AppError if the record is damaged.
[[nodiscard]] std::optional<FileRecord> recordBeside(const std::filesystem::path& file);

/// Throws AppError if the record beside a table file, plain or packed, has another sum of the plain
/// bytes: for a table in parts, of all parts together. Returns whether there is a record.
bool requireRecorded(const std::filesystem::path& file, const std::string& sha256);

/// Writes the record of a table, replacing an existing one. Throws AppError.
void writeRecord(const std::filesystem::path& folder, const TableRecord& record);

/// Adds the packed files in the folder to the table's record, if it has one.
void recordPacking(const std::filesystem::path& folder, int id);

}  // namespace brivok::tables
