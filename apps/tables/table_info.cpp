#include "table_info.h"

#include <array>
#include <cstdint>
#include <vector>

#include "outcome.h"
#include "table_entry.h"
#include "table_store.h"

namespace brivok::tables {
namespace {

struct Tally {
    std::array<std::uint64_t, 256> entries{};  ///< number by outcome
    std::array<std::uint64_t, 256> first{};    ///< index of the first, by outcome

    [[nodiscard]] std::uint64_t total(Outcome from, Outcome to) const {
        std::uint64_t sum = 0;
        for (std::size_t outcome = from; outcome <= to; ++outcome) sum += entries[outcome];
        return sum;
    }
    /// The last outcome that occurs in the range; Draw if none does.
    [[nodiscard]] Outcome last(Outcome from, Outcome to) const {
        for (std::size_t outcome = to; outcome >= from; --outcome) {
            if (entries[outcome] != 0) return static_cast<Outcome>(outcome);
        }
        return Draw;
    }
};

Tally tallyOf(const std::vector<std::uint8_t>& bytes) {
    Tally tally;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const Outcome outcome = outcomeOf(bytes[index]);
        if (tally.entries[outcome]++ == 0) tally.first[outcome] = index;
    }
    return tally;
}

std::string line(const std::string& label, const std::string& text) {
    constexpr std::size_t Column = 17;
    return (label + ":").append(Column - label.size() - 1, ' ') + text + "\n";
}

}  // namespace

std::string tableInfo(const std::filesystem::path& path) {
    const TableFileName name = parseTableFileName(path.filename().string());
    const std::vector<std::uint8_t> bytes =
        readTableFile(path, descriptorOf(name.id).size[name.side]);
    const Material material = materialOf(descriptorOf(name.id).signature());
    const Tally tally = tallyOf(bytes);

    const auto share = [&](std::uint64_t entries) {
        const std::uint64_t legal = bytes.size() - tally.entries[NoValue];
        const std::uint64_t permille = legal == 0 ? 0 : (entries * 1000 + legal / 2) / legal;
        return std::to_string(entries) + " (" + std::to_string(permille / 10) + "." +
               std::to_string(permille % 10) + " % of legal entries)";
    };
    const auto longest = [&](Outcome outcome) {
        if (outcome == Draw) return std::string("none");
        Position position;
        const std::uint64_t index = tally.first[outcome];
        return std::to_string(movesToMate(outcome)) + " moves, " +
               (legalPosition(name.id, material, name.side, index, position)
                    ? fenOf(material, position)
                    : "not a legal position");
    };
    return line("Table", std::string(descriptorOf(name.id).signature())) +
           line("Side to move", name.side == 0 ? "first" : "second") +
           line("Entries", std::to_string(bytes.size())) +
           line("Wins", share(tally.total(winIn(1), winIn(LongestWin)))) +
           line("Draws", share(tally.entries[Draw])) +
           line("Losses", share(tally.total(lossIn(0), lossIn(LongestLoss)))) +
           line("Broken", std::to_string(tally.entries[NoValue])) +
           line("Longest mate", longest(tally.last(winIn(1), winIn(LongestWin)))) +
           line("Longest defence", longest(tally.last(lossIn(0), lossIn(LongestLoss))));
}

}  // namespace brivok::tables
