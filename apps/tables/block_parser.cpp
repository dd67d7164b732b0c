#include "block_parser.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace brivok::tables {
namespace {

constexpr unsigned SlotBits = 5;
constexpr auto NoMatch = std::numeric_limits<std::uint16_t>::max();

/// Matches from this length on are wide.
constexpr unsigned WideLength = ExactClasses + 1;

/// Number of the lowest slot in a set.
std::size_t firstOf(std::uint32_t slots) {
    return static_cast<std::size_t>(std::countr_zero(slots));
}

std::uint16_t packed(std::uint16_t cost, unsigned itsClass, std::size_t slot) {
    if (cost == NoSymbol) return NoMatch;
    const std::size_t sum = cost + extraBits(itsClass) * CostUnit;
    return static_cast<std::uint16_t>(sum << SlotBits | slot);
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

ParseModel::ParseModel(const Distances& itsDistances, const SymbolCosts& costs, ExtensionRule rule)
    : distances(itsDistances), extension(rule) {
    for (std::size_t byte = 0; byte < LiteralCount; ++byte) {
        literals[byte] = costs[byte] == NoSymbol ? BlockParser::Impossible : costs[byte];
    }
    for (std::size_t slot = 0; slot < SlotCount; ++slot) {
        matches[slot].fill(NoMatch);
        for (unsigned c = 0; c < UsedClasses; ++c) {
            matches[slot][c] = packed(costs[matchSymbol(slot, c)], c, slot);
        }
    }
    for (unsigned c = 0; c < ExactClasses; ++c) {
        for (std::size_t plane = 0; plane < PlaneCount; ++plane) {
            PlaneCosts& least = exact[c][plane];
            least[0] = NoMatch;
            for (std::uint32_t slots = 1; slots < least.size(); ++slots) {
                const std::size_t slot = plane * PlaneSlots + firstOf(slots);
                least[slots] = std::min(least[slots & (slots - 1)], matches[slot][c]);
            }
        }
    }
}

BlockParser::BlockParser(const ParseModel& itsModel)
    : model(itsModel),
      repeats(BlockSize + WideLength),
      wideRepeats(BlockSize + WideLength),
      costs(BlockSize + 1),
      steps(BlockSize) {
    for (auto& plane : planes) plane.resize(BlockSize);
}

std::int32_t BlockParser::parse(ByteSpan block) {
    bytes = block.data();
    size = block.size();
    findRepeats();

    costs[size] = 0;
    for (std::size_t place = size; place-- > 0;) {
        std::uint32_t begun = wideRepeats[place] & ~wideRepeats[place + 1];
        for (; begun != 0; begun &= begun - 1) {
            ends[firstOf(begun)] = static_cast<std::uint32_t>(place + WideLength);
        }
        if (place + 1 < size && extendNext(place)) continue;
        Choice choice{std::min(Impossible, model.literals[bytes[place]] + costs[place + 1]), 0, 0};
        tryMatches(place, choice);
        if (wideRepeats[place] != 0) tryWideMatches(place, choice);
        costs[place] = choice.cost;
        steps[place] = {static_cast<std::uint16_t>(choice.length),
                        static_cast<std::uint16_t>(choice.slotCost % (1U << SlotBits))};
    }
    return costs[0];
}

void BlockParser::findRepeats() {
    // All loops over positions are written so that compilers vectorise them.
    for (auto& plane : planes) std::fill_n(plane.begin(), size, std::uint8_t{0});
    for (std::size_t slot = 0; slot < SlotCount; ++slot) {
        const std::size_t distance = model.distances[slot];
        if (distance >= size) continue;
        const auto bit = static_cast<std::uint8_t>(1U << slot % ParseModel::PlaneSlots);
        const std::size_t count = size - distance;
        const std::uint8_t* former = bytes;
        const std::uint8_t* later = bytes + distance;
        std::uint8_t* marks = planes[slot / ParseModel::PlaneSlots].data() + distance;
        for (std::size_t i = 0; i < count; ++i) {
            marks[i] = static_cast<std::uint8_t>(marks[i] | (later[i] == former[i] ? bit : 0));
        }
    }
    for (std::size_t i = 0; i < size; ++i) {
        repeats[i] =
            planes[0][i] | std::uint32_t{planes[1][i]} << 8 | std::uint32_t{planes[2][i]} << 16;
    }
    std::fill_n(repeats.begin() + static_cast<std::ptrdiff_t>(size), WideLength, 0U);
    wideRepeats = repeats;
    for (unsigned reach = 1; reach < WideLength; reach *= 2) {
        for (std::size_t i = 0; i < size; ++i) wideRepeats[i] &= wideRepeats[i + reach];
    }
}

/// Puts a byte before the match at the next position, if the rule allows it. The slots that repeat
/// here have nearly all been tried there already, with the same ends.
bool BlockParser::extendNext(std::size_t place) {
    const Step next = steps[place + 1];
    const unsigned longer = next.length + 1U;
    if (longer <= model.extension.length || (repeats[place] >> next.slot & 1) == 0) return false;
    const auto& slotCosts = model.matches[next.slot];
    const std::uint16_t cost = slotCosts[lengthClass(longer)];
    const std::int32_t more =
        (cost >> SlotBits) - (slotCosts[lengthClass(next.length)] >> SlotBits);
    if (more > model.extension.tolerance) return false;
    costs[place] = costs[place + 1] + more;
    steps[place] = {static_cast<std::uint16_t>(longer), next.slot};
    return true;
}

void BlockParser::Choice::consider(unsigned itsLength, std::uint16_t itsSlotCost,
                                   std::int32_t rest) {
    if (itsSlotCost == NoMatch) return;
    // Written so that compilers need no jump, which would be hard to predict.
    const std::int32_t total = (itsSlotCost >> SlotBits) + rest;
    const bool cheaper = total <= cost;
    cost = cheaper ? total : cost;
    length = cheaper ? itsLength : length;
    slotCost = cheaper ? itsSlotCost : slotCost;
}

void BlockParser::tryMatches(std::size_t place, Choice& choice) const {
    std::uint32_t slots = repeats[place];
    for (unsigned length = 1; slots != 0 && length <= ExactClasses; ++length) {
        choice.consider(length, model.cheapest(length - 1, slots), costs[place + length]);
        slots &= repeats[place + length];
    }
}

void BlockParser::tryWideMatches(std::size_t place, Choice& choice) const {
    std::array<ParseModel::SlotCost, ClassCount> filled;  // of the classes that a match fills
    filled.fill(NoMatch);
    for (std::uint32_t slots = wideRepeats[place]; slots != 0; slots &= slots - 1) {
        const std::size_t slot = firstOf(slots);
        const auto run = static_cast<unsigned>(ends[slot] - place);
        const unsigned own = lengthClass(run);
        for (unsigned c = ExactClasses; c < own; ++c) {
            filled[c] = std::min(filled[c], model.matches[slot][c]);
        }
        choice.consider(run, model.matches[slot][own], costs[place + run]);
    }
    for (unsigned c = ExactClasses; c < UsedClasses; ++c) {
        if (filled[c] == NoMatch) continue;
        choice.consider(longestOf(c), filled[c], costs[place + longestOf(c)]);
    }
}

}  // namespace brivok::tables
