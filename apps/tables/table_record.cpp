#include "table_record.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <numeric>
#include <span>
#include <string_view>

#include <nlohmann/json.hpp>

#include "../common/app_error.h"
#include "../common/files.h"
#include "egtb/descriptors.h"
#include "file_pieces.h"
#include "material.h"
#include "outcome.h"
#include "table_entry.h"

namespace brivok::tables {
namespace {

/// Keeps members in insertion order.
using Json = nlohmann::ordered_json;

void countIn(std::vector<std::uint64_t>& byMoves, unsigned moves, std::uint64_t entries) {
    if (byMoves.size() <= moves) byMoves.resize(moves + std::size_t{1});
    byMoves[moves] += entries;
}

void keepLongest(std::optional<LongestMate>& longest, unsigned moves, std::uint64_t index) {
    if (!longest || longest->moves < moves) longest = {.moves = moves, .index = index, .fen = {}};
}

std::string fenOfEntry(int id, unsigned side, std::uint64_t index) {
    const Material material = materialOf(descriptorOf(id).signature());
    Position position;
    return legalPosition(id, material, side, index, position) ? fenOf(material, position) : "";
}

Json jsonOf(const std::optional<LongestMate>& mate) {
    if (!mate) return nullptr;
    return {{"moves", mate->moves}, {"index", mate->index}, {"fen", mate->fen}};
}

Json jsonOf(const std::optional<PackedRecord>& packed) {
    if (!packed) return nullptr;
    return {{"bytes", packed->bytes}, {"sha256", packed->sha256}};
}

Json jsonOf(const std::optional<Making>& making) {
    if (!making) return nullptr;
    return {{"seconds", making->seconds},
            {"processor_seconds", making->processorSeconds},
            {"threads", making->threads},
            {"peak_bytes", making->peakBytes}};
}

Json jsonOf(const FileRecord& file) {
    return {{"entries", file.entries},
            {"entry_bytes", file.entryBytes},
            {"wins", file.wins},
            {"draws", file.draws},
            {"losses", file.losses},
            {"without_value", file.withoutValue},
            {"longest_win", jsonOf(file.longestWin)},
            {"longest_loss", jsonOf(file.longestLoss)},
            {"sha256", file.sha256},
            {"packed", jsonOf(file.packed)},
            {"wins_in", file.winsIn},
            {"losses_in", file.lossesIn}};
}

/// A member that may be null, as whatever `read` makes of it.
template <typename Read>
auto optionalOf(const Json& json, Read read) -> std::optional<decltype(read(json))> {
    if (json.is_null()) return std::nullopt;
    return read(json);
}

LongestMate mateOf(const Json& json) {
    return {.moves = json.at("moves"), .index = json.at("index"), .fen = json.at("fen")};
}

PackedRecord packedOf(const Json& json) {
    return {.bytes = json.at("bytes"), .sha256 = json.at("sha256")};
}

Making makingOf(const Json& json) {
    return {.seconds = json.at("seconds"),
            .processorSeconds = json.at("processor_seconds"),
            .threads = json.at("threads"),
            .peakBytes = json.at("peak_bytes")};
}

FileRecord fileOf(const Json& json) {
    return {.entries = json.at("entries"),
            .entryBytes = json.at("entry_bytes"),
            .wins = json.at("wins"),
            .draws = json.at("draws"),
            .losses = json.at("losses"),
            .withoutValue = json.at("without_value"),
            .winsIn = json.at("wins_in"),
            .lossesIn = json.at("losses_in"),
            .longestWin = optionalOf(json.at("longest_win"), mateOf),
            .longestLoss = optionalOf(json.at("longest_loss"), mateOf),
            .sha256 = json.at("sha256"),
            .packed = optionalOf(json.at("packed"), packedOf)};
}

bool isSum(std::string_view text) {
    return text.size() == 64 &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// Whether the counts by moves add up to the total, and end with the longest mate.
bool agree(std::uint64_t total, const std::vector<std::uint64_t>& byMoves,
           const std::optional<LongestMate>& longest, std::uint64_t entries) {
    if (std::accumulate(byMoves.begin(), byMoves.end(), std::uint64_t{0}) != total) return false;
    if (!longest) return total == 0 && byMoves.empty();
    return byMoves.size() == longest->moves + std::size_t{1} && longest->index < entries;
}

/// Whether a record can be that of a table's file.
bool isSound(const FileRecord& file, int id, unsigned side) {
    return file.entries == descriptorOf(id).size[side] && file.entryBytes == entryBytesOf(id) &&
           file.wins + file.draws + file.losses + file.withoutValue == file.entries &&
           agree(file.wins, file.winsIn, file.longestWin, file.entries) &&
           agree(file.losses, file.lossesIn, file.longestLoss, file.entries) &&
           isSum(file.sha256) && (!file.packed || isSum(file.packed->sha256));
}

bool isSound(const TableRecord& record, int id) {
    if (record.signature != descriptorOf(id).signature()) return false;
    if (record.files.size() != filesOf(id)) return false;
    for (unsigned side = 0; side < filesOf(id); ++side) {
        if (!isSound(record.files[side], id, side)) return false;
    }
    return true;
}

/// The record of the side to move of a table file, from the folder of that file.
std::optional<FileRecord> recordOfSide(const std::filesystem::path& file,
                                       const TableFileName& name) {
    const auto record = readRecord(file.parent_path(), name.id);
    if (!record) return std::nullopt;
    return record->files[name.side];
}

}  // namespace

FileTally::FileTally(int itsId, unsigned itsSide)
    : id(itsId),
      side(itsSide),
      entryBytes(entryBytesOf(id)),
      counts(std::size_t{1} << 8 * entryBytes) {}

void FileTally::add(ByteSpan bytes) {
    sum.add(bytes);
    for (const std::uint8_t byte : bytes) {
        if (entryBytes == 1) {
            count(byte);
        } else if (!lowByte) {
            lowByte = byte;
        } else {
            count(*lowByte | std::size_t{byte} << 8U);
            lowByte.reset();
        }
    }
}

FileRecord FileTally::finish() {
    FileRecord record{.entries = entries, .entryBytes = entryBytes, .sha256 = sum.finish()};
    for (std::size_t stored = 0; stored < counts.size(); ++stored) {
        const Count& count = counts[stored];
        if (count.entries == 0) continue;
        const Outcome outcome = entryBytes == 1 ? outcomeOf(static_cast<std::uint8_t>(stored))
                                                : outcomeOfWide(static_cast<std::uint16_t>(stored));
        if (outcome == NoValue) {
            record.withoutValue += count.entries;
        } else if (outcome == Draw) {
            record.draws += count.entries;
        } else if (isWin(outcome)) {
            record.wins += count.entries;
            countIn(record.winsIn, movesToMate(outcome), count.entries);
            keepLongest(record.longestWin, movesToMate(outcome), count.first);
        } else {
            record.losses += count.entries;
            countIn(record.lossesIn, movesToMate(outcome), count.entries);
            keepLongest(record.longestLoss, movesToMate(outcome), count.first);
        }
    }
    for (auto* const longest : {&record.longestWin, &record.longestLoss}) {
        if (*longest) (*longest)->fen = fenOfEntry(id, side, (*longest)->index);
    }
    return record;
}

FileRecord recordOf(int id, unsigned side, ByteSpan bytes) {
    FileTally tally(id, side);
    tally.add(bytes);
    return tally.finish();
}

FileReading readTable(const std::filesystem::path& path) {
    const TableFileName name = parseTableFileName(path.filename().string());
    if (isSplit(name.id)) fail(path, "is a part of a table, and can only be read with the others");
    const std::uint64_t size = descriptorOf(name.id).size[name.side];
    FileTally tally(name.id, name.side);
    FileReading reading;
    reading.blockSumsKnown =
        forEachPiece(path, size * entryBytesOf(name.id), [&](ByteSpan piece) { tally.add(piece); });
    reading.record = tally.finish();
    if (reading.record.entries != size) {
        fail(path, std::to_string(reading.record.entries) + " entries instead of " +
                       std::to_string(size));
    }
    reading.recorded = requireRecorded(path, reading.record.sha256);
    return reading;
}

TableRecord recordOf(int id, TableStore& store, const std::optional<Making>& making) {
    TableRecord record{.signature = std::string(descriptorOf(id).signature()), .making = making};
    for (unsigned side = 0; side < filesOf(id); ++side) {
        record.files.push_back(recordOf(id, side, store.entries(id, side)));
    }
    return record;
}

PackedRecord packedRecordOf(const std::filesystem::path& packed) {
    std::error_code failure;
    const std::uintmax_t bytes = std::filesystem::file_size(packed, failure);
    if (failure) fail(packed, failure.message());
    return {.bytes = bytes, .sha256 = sha256OfFile(packed)};
}

std::filesystem::path recordPath(const std::filesystem::path& folder, int id) {
    return folder / (std::string(descriptorOf(id).signature()) + ".json");
}

std::optional<TableRecord> readRecord(const std::filesystem::path& folder, int id) {
    const std::filesystem::path path = recordPath(folder, id);
    if (!std::filesystem::exists(path)) return std::nullopt;
    std::ifstream file(path);
    if (!file) failWithErrno(path);
    TableRecord record;
    try {
        const Json json = Json::parse(file);
        record.signature = json.at("table");
        record.making = optionalOf(json.at("making"), makingOf);
        for (const Json& one : json.at("files")) record.files.push_back(fileOf(one));
    } catch (const Json::exception&) {
        fail(path, "is no record of a table, or is damaged");
    }
    if (!isSound(record, id)) fail(path, "contradicts itself, or tells of another table");
    return record;
}

std::optional<FileRecord> recordBeside(const std::filesystem::path& file) {
    const auto name = tableFileOf(file.filename().string());
    return name && !isSplit(name->id) ? recordOfSide(file, *name) : std::nullopt;
}

bool requireRecorded(const std::filesystem::path& file, const std::string& sha256) {
    const auto name = tableFileOf(file.filename().string());
    const auto record = name ? recordOfSide(file, *name) : std::nullopt;
    if (record && record->sha256 != sha256) {
        fail(file, "is damaged: it does not have the recorded SHA-256 sum");
    }
    return record.has_value();
}

void writeRecord(const std::filesystem::path& folder, const TableRecord& record) {
    Json files = Json::array();
    for (const FileRecord& file : record.files) files.push_back(jsonOf(file));
    const Json json = {
        {"table", record.signature}, {"making", jsonOf(record.making)}, {"files", files}};
    const std::string text = json.dump(1) + "\n";
    NewFile file(folder / (record.signature + ".json"));
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.finish();
}

void recordPacking(const std::filesystem::path& folder, int id) {
    std::optional<TableRecord> record = readRecord(folder, id);
    if (!record) return;
    for (unsigned side = 0; side < filesOf(id); ++side) {
        if (isSplit(id)) continue;  // the sizes and sums of parts are not recorded
        const std::filesystem::path packed = packedName(folder / tableFileName(id, side));
        if (std::filesystem::exists(packed)) record->files[side].packed = packedRecordOf(packed);
    }
    writeRecord(folder, *record);
}

}  // namespace brivok::tables
