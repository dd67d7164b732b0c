#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "table_record.h"

namespace brivok::tables {

/// A position from which the mate takes longest, with the moves to the mate.
struct ReportedMate {
    unsigned side = 0;  ///< to move: 0 is White, the first side of the table
    bool won = false;   ///< by the side to move
    LongestMate mate;
    std::string line{};  ///< numbered moves
    std::string gap{};   ///< why the line ends early; empty if it does not
    /// Positions that are lost in so many moves, more than their entries can say, so that the file
    /// has no value for them; 0 if the file has one.
    std::uint64_t withoutValue = 0;
};

/// What a report tells of a table.
struct ReportedTable {
    int id = 0;
    TableRecord record;     ///< of packed parts only the size of all together, without a sum
    bool recorded = false;  ///< otherwise the files were read for the report
    std::vector<ReportedMate> mates;

    /// Whether one file serves both sides.
    [[nodiscard]] bool sameForBoth() const { return record.files.size() == 1; }
    /// Plain bytes.
    [[nodiscard]] std::uint64_t bytes() const;
    /// Packed bytes, if all files are packed.
    [[nodiscard]] std::optional<std::uint64_t> packedBytes() const;
    /// Moves to the longest mate that a side gives, whoever is to move; 0 if it gives none.
    [[nodiscard]] unsigned longestMateBy(unsigned side) const;
    /// The longest mate with a side to move; null if there is none.
    [[nodiscard]] const ReportedMate* longestMate(unsigned side, bool won) const;
};

/// Tables with the same numbers of men on each side.
struct ReportedGroup {
    std::string heading;    ///< "Two men against a knight"
    std::string shortName;  ///< "two-against-knight", for files
    std::vector<const ReportedTable*> tables;
};

struct TableReport {
    std::vector<ReportedTable> tables;    ///< in the order of the groups
    std::vector<std::string> incomplete;  ///< signatures of tables that lack a file
};

/// Looks at all tables of a folder, plain or packed. A record is believed if the sizes of the files
/// agree; files without a record are read. Throws AppError, also if there are no tables.
[[nodiscard]] TableReport reportOn(const std::filesystem::path& folder,
                                   const std::function<void(const std::string&)>& progress);

/// Groups by material, from few men to many.
[[nodiscard]] std::vector<ReportedGroup> groupsOf(const TableReport& report);

}  // namespace brivok::tables
