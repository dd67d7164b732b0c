#include "block_parser.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace brivok::tables {
namespace {

constexpr unsigned SlotBits = 5;
constexpr std::int16_t NoMatch = std::numeric_limits<std::int16_t>::max();
constexpr std::size_t RowSize = 16;

/// Inside a match of this length, no alternatives are considered.
constexpr unsigned GoodLength = 32;

/// Indexed by run length, up to ExactClasses: ORed with a row, keeps only the classes that fit.
constexpr auto fitting = []() {
    std::array<std::array<std::int16_t, RowSize>, ExactClasses + 1> masks{};
    for (std::size_t run = 0; run < masks.size(); ++run) {
        for (std::size_t i = run; i < RowSize; ++i) masks[run][i] = NoMatch;
    }
    return masks;
}();

/// Number of the lowest slot in a set.
std::size_t firstOf(std::uint32_t slots) {
    return static_cast<std::size_t>(std::countr_zero(slots));
}

std::int16_t packed(std::uint16_t cost, unsigned itsClass, std::size_t slot) {
    if (cost == NoSymbol) return NoMatch;
    const std::size_t sum = cost + extraBits(itsClass) * CostUnit;
    return static_cast<std::int16_t>(sum << SlotBits | slot);
}

template <typename Row>
void takeCheaper(Row& best, const Row& row, const Row& mask) {
    for (std::size_t i = 0; i < RowSize; ++i) {
        const auto cost = static_cast<std::int16_t>(row[i] | mask[i]);
        best[i] = cost < best[i] ? cost : best[i];
    }
}

}  // namespace

SymbolCosts costsOf(const SymbolCounts& counts) {
    double total = 1;
    for (const std::uint64_t count : counts) total += static_cast<double>(count);
    SymbolCosts costs{};
    for (std::size_t symbol = 0; symbol < SymbolCount; ++symbol) {
        const double count = std::max(0.5, static_cast<double>(counts[symbol]));
        const double bits = std::clamp(std::log2(total / count), 0.25, 20.0);
        costs[symbol] = static_cast<std::uint16_t>(std::lround(bits * CostUnit));
    }
    return costs;
}

SymbolCosts costsOf(const PrefixCode& code) {
    SymbolCosts costs{};
    for (std::size_t symbol = 0; symbol < SymbolCount; ++symbol) {
        costs[symbol] =
            code.has(symbol) ? static_cast<std::uint16_t>(code.bits(symbol) * CostUnit) : NoSymbol;
    }
    return costs;
}

ParseModel::ParseModel(const Distances& itsDistances, const SymbolCosts& costs)
    : distances(itsDistances) {
    for (std::size_t byte = 0; byte < LiteralCount; ++byte) {
        literals[byte] = costs[byte] == NoSymbol ? BlockParser::Impossible : costs[byte];
    }
    for (std::size_t slot = 0; slot < SlotCount; ++slot) {
        exact[slot].fill(NoMatch);
        wide[slot].fill(NoMatch);
        for (unsigned c = 0; c < UsedClasses; ++c) {
            std::int16_t& place = c < ExactClasses ? exact[slot][c] : wide[slot][c - ExactClasses];
            place = packed(costs[matchSymbol(slot, c)], c, slot);
        }
    }
}

BlockParser::BlockParser(const ParseModel& itsModel)
    : model(itsModel), costs(BlockSize + 1), steps(BlockSize) {
    for (auto& plane : repeats) plane.resize(BlockSize + 1);
}

std::int32_t BlockParser::parse(ByteSpan block) {
    bytes = block.data();
    size = block.size();
    findRepeats();

    costs[size] = 0;
    Ends ends{};
    std::uint32_t former = 0;
    for (std::size_t place = size; place-- > 0;) {
        const std::uint32_t slots = repeatsAt(place);
        for (std::uint32_t begun = slots & ~former; begun != 0; begun &= begun - 1) {
            ends[firstOf(begun)] = static_cast<std::uint32_t>(place + 1);
        }
        former = slots;

        if (place + 1 < size) {
            const Step next = steps[place + 1];
            const unsigned longer = next.length + 1U;
            if (longer > GoodLength && (slots >> next.slot & 1) != 0 &&
                place + longer <= ends[next.slot] &&
                lengthClass(longer) == lengthClass(next.length)) {
                costs[place] = costs[place + 1];
                steps[place] = {static_cast<std::uint16_t>(longer), next.slot};
                continue;
            }
        }
        costs[place] = std::min(Impossible, model.literals[bytes[place]] + costs[place + 1]);
        steps[place] = {};
        tryMatches(place, slots, ends);
    }
    return costs[0];
}

void BlockParser::findRepeats() {
    for (auto& plane : repeats) std::fill_n(plane.begin(), size + 1, std::uint8_t{0});
    for (std::size_t slot = 0; slot < SlotCount; ++slot) {
        const std::size_t distance = model.distances[slot];
        if (distance >= size) continue;
        const auto bit = static_cast<std::uint8_t>(1U << slot % PlaneSlots);
        const std::size_t count = size - distance;
        const std::uint8_t* former = bytes;
        const std::uint8_t* later = bytes + distance;
        std::uint8_t* marks = repeats[slot / PlaneSlots].data() + distance;
        for (std::size_t i = 0; i < count; ++i) {
            marks[i] = static_cast<std::uint8_t>(marks[i] | (later[i] == former[i] ? bit : 0));
        }
    }
}

void BlockParser::tryMatches(std::size_t place, std::uint32_t slots, const Ends& ends) {
    ParseModel::Row best;
    best.fill(NoMatch);
    unsigned longest = 0;
    std::uint32_t wide = 0;
    for (; slots != 0; slots &= slots - 1) {
        const std::size_t slot = firstOf(slots);
        const auto run = static_cast<unsigned>(ends[slot] - place);
        longest = std::max(longest, run);
        if (run > ExactClasses) wide |= 1U << slot;
        takeCheaper(best, model.exact[slot], fitting[std::min(run, ExactClasses)]);
    }
    for (unsigned c = 0; c < std::min(longest, ExactClasses); ++c) {
        if (best[c] == NoMatch) continue;
        consider(place, static_cast<std::size_t>(best[c]) % (1U << SlotBits), shortestOf(c),
                 best[c] >> SlotBits);
    }
    if (wide != 0) tryWideMatches(place, wide, ends);
}

void BlockParser::tryWideMatches(std::size_t place, std::uint32_t slots, const Ends& ends) {
    ParseModel::Row best;  // of the classes that a match fills completely
    best.fill(NoMatch);
    for (; slots != 0; slots &= slots - 1) {
        const std::size_t slot = firstOf(slots);
        const auto run = static_cast<unsigned>(ends[slot] - place);
        const unsigned own = lengthClass(run) - ExactClasses;
        takeCheaper(best, model.wide[slot], fitting[own]);
        const std::int16_t cost = model.wide[slot][own];
        if (cost != NoMatch) consider(place, slot, run, cost >> SlotBits);
    }
    for (unsigned c = ExactClasses; c < UsedClasses; ++c) {
        const std::int16_t cost = best[c - ExactClasses];
        if (cost == NoMatch) continue;
        consider(place, static_cast<std::size_t>(cost) % (1U << SlotBits), longestOf(c),
                 cost >> SlotBits);
    }
}

}  // namespace brivok::tables
