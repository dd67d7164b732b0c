#include "table_info.h"

#include <cstdint>
#include <optional>

#include "table_record.h"
#include "table_store.h"

namespace brivok::tables {
namespace {

std::string line(const std::string& label, const std::string& text) {
    constexpr std::size_t Column = 17;
    return (label + ":").append(Column - label.size() - 1, ' ') + text + "\n";
}

std::string share(std::uint64_t entries, std::uint64_t legal) {
    const std::uint64_t permille = legal == 0 ? 0 : (entries * 1000 + legal / 2) / legal;
    return std::to_string(entries) + " (" + std::to_string(permille / 10) + "." +
           std::to_string(permille % 10) + " % of legal entries)";
}

std::string longest(const std::optional<LongestMate>& mate) {
    if (!mate) return "none";
    return std::to_string(mate->moves) + " moves, " +
           (mate->fen.empty() ? "not a legal position" : mate->fen);
}

}  // namespace

std::string tableInfo(const std::filesystem::path& path) {
    const TableFileName name = parseTableFileName(path.filename().string());
    const FileReading reading = readTable(path);
    const FileRecord& file = reading.record;
    const std::string blocks =
        !isPackedName(path)
            ? ""
            : line("Blocks", reading.blockSumsKnown ? "their checksums agree"
                                                    : "their checksums are of an unknown kind");
    return line("Table", std::string(descriptorOf(name.id).signature())) +
           line("Side to move", name.side == 0 ? "first" : "second") +
           line("Entries", std::to_string(file.entries)) +
           line("Wins", share(file.wins, file.legal())) +
           line("Draws", share(file.draws, file.legal())) +
           line("Losses", share(file.losses, file.legal())) +
           line("Broken", std::to_string(file.withoutValue)) +
           line("Longest mate", longest(file.longestWin)) +
           line("Longest defence", longest(file.longestLoss)) +
           line("SHA-256", file.sha256 + (reading.recorded ? ", as recorded" : "")) + blocks;
}

}  // namespace brivok::tables
