#include "table_report.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include "../common/app_error.h"
#include "egtb/descriptors.h"
#include "file_pieces.h"
#include "material.h"
#include "outcome.h"
#include "report_text.h"
#include "table_entry.h"
#include "table_store.h"

namespace brivok::tables {
namespace {

/// The men of a signature besides the kings.
struct Sides {
    std::string_view first;
    std::string_view second;
};

Sides sidesOf(std::string_view signature) {
    const std::size_t king = signature.find('k', 1);
    return {signature.substr(1, king - 1), signature.substr(king + 1)};
}

/// Groups come in this order, and tables of a group agree in it.
auto groupKey(std::string_view signature) {
    const Sides sides = sidesOf(signature);
    constexpr std::string_view Order = "pnbrq";
    const bool named = sides.first.size() > 1 && sides.second.size() == 1;
    return std::tuple(signature.size(), sides.second.size(),
                      named ? Order.find(sides.second.front()) : 0);
}

ReportedGroup groupFor(std::string_view signature) {
    const Sides sides = sidesOf(signature);
    const std::string many = numberWord(sides.first.size());
    const std::string men = sides.first.size() == 1 ? "one man" : many + " men";
    ReportedGroup group;
    std::string opponent = "king";
    if (sides.second.empty()) {
        group.heading = men + " against the king";
    } else if (sides.first.size() > 1 && sides.second.size() == 1) {
        const std::string text = menText(signature);
        opponent = text.substr(text.rfind(' ') + 1);
        group.heading = men + " against a " + opponent;
    } else {
        opponent = numberWord(sides.second.size());
        group.heading = men + " against " + opponent;
    }
    group.heading = capitalized(group.heading);
    group.shortName = many + "-against-" + opponent;
    return group;
}

std::uintmax_t sizeOf(const std::filesystem::path& path) {
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path, failure);
    if (failure) fail(path, failure.message());
    return size;
}

constexpr const char* NotAsRecorded = "is not the file that its record tells of";

void requireSize(const std::filesystem::path& path, std::uint64_t size) {
    if (sizeOf(path) != size) fail(path, NotAsRecorded);
}

/// Adds what is on disk of packed files to the record, and compares the sizes of the files.
void meetFiles(FileRecord& file, const std::filesystem::path& folder, int id, unsigned side) {
    const unsigned parts = partsOf(id, side);
    std::uint64_t packedBytes = 0;
    bool isPacked = true;
    for (unsigned part = 0; part < parts; ++part) {
        const std::filesystem::path plain = folder / tableFileName(id, side, part);
        const std::filesystem::path packed = packedName(plain);
        const bool isLast = part + 1 == parts;
        if (std::filesystem::exists(plain)) {
            requireSize(plain, isLast ? file.bytes() - part * PartBytes : PartBytes);
        }
        if (std::filesystem::exists(packed)) {
            packedBytes += sizeOf(packed);
        } else {
            isPacked = false;
        }
    }
    if (!isPacked) return;
    if (isSplit(id)) {
        file.packed = PackedRecord{.bytes = packedBytes, .sha256 = {}};
    } else if (!file.packed) {
        file.packed = packedRecordOf(packedName(folder / tableFileName(id, side)));
    } else if (packedBytes != file.packed->bytes) {
        fail(packedName(folder / tableFileName(id, side)), NotAsRecorded);
    }
}

/// The record of files that have none.
FileRecord readFiles(const TableStore& store, int id, unsigned side) {
    if (!isSplit(id)) return readTable(store.find(id, side)).record;
    FileTally tally(id, side);
    forEachPiece(store, id, side, [&](ByteSpan piece) { tally.add(piece); });
    FileRecord record = tally.finish();
    if (record.bytes() != bytesOf(id, side)) {
        fail(store.find(id, side), "and the other parts have the wrong length");
    }
    return record;
}

/// An entry of a byte can say that a position is won in 127 moves, but not that one is lost in 127.
/// Where there are such wins there are such losses: legal positions without a value.
std::optional<ReportedMate> lossBeyondEntries(const TableStore& store, int id, unsigned side,
                                              const FileRecord& opponents) {
    constexpr unsigned MostMoves = 127;
    if (opponents.entryBytes != 1 || !opponents.longestWin ||
        opponents.longestWin->moves < MostMoves) {
        return std::nullopt;
    }
    const Material material = materialOf(descriptorOf(id).signature());
    ReportedMate lost{.side = side, .won = false, .mate = {.moves = MostMoves, .fen = {}}};
    std::uint64_t index = 0;
    Position position;
    forEachPiece(store, id, side, [&](ByteSpan bytes) {
        for (const std::uint8_t byte : bytes) {
            const std::uint64_t here = index++;
            if (byte != BrokenByte || !legalPosition(id, material, side, here, position)) continue;
            if (lost.withoutValue++ != 0) continue;
            lost.mate.index = here;
            lost.mate.fen = fenOf(material, position);
        }
    });
    if (lost.withoutValue == 0) return std::nullopt;
    return lost;
}

/// The longest mates of a file with `side` to move.
void addMates(ReportedTable& table, const TableStore& store, unsigned side) {
    const FileRecord& file = table.record.files[side];
    if (file.longestWin) {
        table.mates.push_back({.side = side, .won = true, .mate = *file.longestWin});
    }
    const FileRecord& opponents = table.sameForBoth() ? file : table.record.files[1 - side];
    if (const auto beyond = lossBeyondEntries(store, table.id, side, opponents)) {
        table.mates.push_back(*beyond);
    } else if (file.longestLoss && file.longestLoss->moves > 0) {
        table.mates.push_back({.side = side, .won = false, .mate = *file.longestLoss});
    }
}

ReportedTable readReported(const std::filesystem::path& folder, const TableStore& store, int id) {
    ReportedTable table{.id = id, .record = {}, .mates = {}};
    if (auto record = readRecord(folder, id)) {
        table.record = std::move(*record);
        table.recorded = true;
    } else {
        table.record.signature = descriptorOf(id).signature();
        for (unsigned side = 0; side < filesOf(id); ++side) {
            table.record.files.push_back(readFiles(store, id, side));
        }
    }
    for (unsigned side = 0; side < filesOf(id); ++side) {
        meetFiles(table.record.files[side], folder, id, side);
        addMates(table, store, side);
    }
    return table;
}

}  // namespace

std::uint64_t ReportedTable::bytes() const {
    return std::accumulate(
        record.files.begin(), record.files.end(), std::uint64_t{0},
        [](std::uint64_t sum, const FileRecord& file) { return sum + file.bytes(); });
}

std::optional<std::uint64_t> ReportedTable::packedBytes() const {
    std::uint64_t sum = 0;
    for (const FileRecord& file : record.files) {
        if (!file.packed) return std::nullopt;
        sum += file.packed->bytes;
    }
    return sum;
}

unsigned ReportedTable::longestMateBy(unsigned side) const {
    unsigned longest = 0;
    for (const ReportedMate& mate : mates) {
        const bool bySide = sameForBoth() || (mate.side == side) == mate.won;
        if (bySide) longest = std::max(longest, mate.mate.moves);
    }
    return longest;
}

const ReportedMate* ReportedTable::longestMate(unsigned side, bool won) const {
    const auto found = std::ranges::find_if(
        mates, [&](const ReportedMate& mate) { return mate.side == side && mate.won == won; });
    return found == mates.end() ? nullptr : &*found;
}

TableReport reportOn(const std::filesystem::path& folder,
                     const std::function<void(const std::string&)>& progress) {
    if (!std::filesystem::is_directory(folder)) fail(folder, "no such folder");
    TableReport report;
    const TableStore store(folder);
    for (int id = 1; id < TableCount; ++id) {
        const std::string signature(descriptorOf(id).signature());
        if (signature.size() > MaxMen || !store.hasAny(id)) continue;
        if (!store.has(id)) {
            report.incomplete.push_back(signature);
            continue;
        }
        progress(signature);
        report.tables.push_back(readReported(folder, store, id));
    }
    if (report.tables.empty()) fail(folder, "has no complete tables");
    std::ranges::stable_sort(report.tables, [](const auto& left, const auto& right) {
        return groupKey(left.record.signature) < groupKey(right.record.signature);
    });
    return report;
}

std::vector<ReportedGroup> groupsOf(const TableReport& report) {
    std::vector<ReportedGroup> groups;
    for (const ReportedTable& table : report.tables) {
        const std::string_view signature = table.record.signature;
        if (groups.empty() ||
            groupKey(groups.back().tables.back()->record.signature) != groupKey(signature)) {
            groups.push_back(groupFor(signature));
        }
        groups.back().tables.push_back(&table);
    }
    return groups;
}

}  // namespace brivok::tables
