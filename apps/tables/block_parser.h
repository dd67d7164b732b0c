#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "datacomp_symbols.h"
#include "prefix_code.h"

namespace brivok::tables {

/// Cost of each symbol without its extra bits, in sixteenths of a bit.
using SymbolCosts = std::array<std::uint16_t, SymbolCount>;
inline constexpr unsigned CostUnit = 16;
inline constexpr std::uint16_t NoSymbol = std::numeric_limits<std::uint16_t>::max();

/// Symbol costs in a code made for these counts. Symbols that did not occur cost as much as a rare
/// one.
[[nodiscard]] SymbolCosts costsOf(const SymbolCounts& counts);

/// Symbol costs in a code; NoSymbol for symbols without a code.
[[nodiscard]] SymbolCosts costsOf(const PrefixCode& code);

/// A byte, or a match with the index of its length within its class.
struct Token {
    std::uint16_t symbol = 0;
    std::uint16_t extra = 0;
    std::uint8_t extraBits = 0;
};

/// When the parser puts another byte before a match without looking for anything better: if the
/// match gets longer than `length`, and dearer by at most `tolerance` sixteenths of a bit.
struct ExtensionRule {
    unsigned length = 0;
    std::int32_t tolerance = 0;
};

/// Distances and costs in the form that the parser uses; threads may share it.
class ParseModel {
public:
    ParseModel(const Distances& itsDistances, const SymbolCosts& costs, ExtensionRule rule);

private:
    friend class BlockParser;

    static constexpr std::size_t PlaneSlots = 8;
    static constexpr std::size_t PlaneCount = SlotCount / PlaneSlots;

    /// A cost shifted left by SlotBits, with the slot in the low bits, so that the least value also
    /// names the cheapest slot.
    using SlotCost = std::uint16_t;
    /// By set of eight slots, one bit each: the cheapest.
    using PlaneCosts = std::array<SlotCost, 1U << PlaneSlots>;

    [[nodiscard]] SlotCost cheapest(unsigned itsClass, std::uint32_t slots) const {
        const auto& planes = exact[itsClass];
        const SlotCost low = std::min(planes[0][slots & 0xFF], planes[1][slots >> 8 & 0xFF]);
        return std::min(low, planes[2][slots >> 16]);
    }

    Distances distances;
    ExtensionRule extension;
    std::array<std::int32_t, LiteralCount> literals{};
    /// Costs of matches with their extra bits, by slot and class.
    std::array<std::array<SlotCost, ClassCount>, SlotCount> matches{};
    std::array<std::array<PlaneCosts, PlaneCount>, ExactClasses> exact{};  ///< classes 0 to 14
};

/// Finds the cheapest sequence of tokens for a block, by dynamic programming from its end. In the
/// classes of long lengths it considers only the longest length that each match allows.
class BlockParser {
public:
    explicit BlockParser(const ParseModel& itsModel);

    /// Parses a block of 1 to BlockSize bytes. Returns the cost of its tokens with their extra bits
    /// in sixteenths of a bit; at least Impossible if the model lacks the symbols for it.
    std::int32_t parse(ByteSpan block);
    static constexpr std::int32_t Impossible = 1 << 24;

    /// Calls visit(token) for the tokens of the last parse, in order.
    template <typename Visit>
    void forEachToken(Visit visit) const {
        for (std::size_t place = 0; place < size;) {
            const Step& step = steps[place];
            if (step.length == 0) {
                visit(Token{.symbol = bytes[place]});
                ++place;
                continue;
            }
            const unsigned itsClass = lengthClass(step.length);
            visit(Token{
                .symbol = static_cast<std::uint16_t>(matchSymbol(step.slot, itsClass)),
                .extra = static_cast<std::uint16_t>(step.length - shortestOf(itsClass)),
                .extraBits = static_cast<std::uint8_t>(extraBits(itsClass)),
            });
            place += step.length;
        }
    }

private:
    /// The first token of the cheapest parse from a position to the end of the block.
    struct Step {
        std::uint16_t length = 0;  ///< 0 for a byte
        std::uint16_t slot = 0;
    };
    /// The cheapest first token so far, with the cost from it to the end of the block.
    struct Choice {
        std::int32_t cost = 0;
        unsigned length = 0;
        std::uint16_t slotCost = 0;
        void consider(unsigned itsLength, std::uint16_t itsSlotCost, std::int32_t rest);
    };

    void findRepeats();
    [[nodiscard]] bool extendNext(std::size_t place);
    void tryMatches(std::size_t place, Choice& choice) const;
    void tryWideMatches(std::size_t place, Choice& choice) const;

    const ParseModel& model;
    const std::uint8_t* bytes = nullptr;
    std::size_t size = 0;

    /// By position, eight slots per plane: the slots whose distance has the same byte.
    std::array<std::vector<std::uint8_t>, ParseModel::PlaneCount> planes;
    /// The same in one number, then those that repeat at least WideLength bytes; zeros follow.
    std::vector<std::uint32_t> repeats;
    std::vector<std::uint32_t> wideRepeats;
    /// By slot: where the repetition that covers the current position ends. Valid only for slots in
    /// `wideRepeats`.
    std::array<std::uint32_t, SlotCount> ends{};
    std::vector<std::int32_t> costs;  ///< of the rest of the block, by position
    std::vector<Step> steps;
};

}  // namespace brivok::tables
