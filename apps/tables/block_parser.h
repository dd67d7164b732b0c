#pragma once

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

/// Distances and costs in the form that the parser uses; threads may share it.
class ParseModel {
public:
    ParseModel(const Distances& itsDistances, const SymbolCosts& costs);

private:
    friend class BlockParser;

    /// Costs of a slot's matches with their extra bits, by class. Each is shifted left by SlotBits
    /// with the slot in the low bits, so that the least value also names the cheapest slot.
    using Row = std::array<std::int16_t, 16>;

    Distances distances;
    std::array<std::int32_t, LiteralCount> literals{};
    std::array<Row, SlotCount> exact{};  ///< classes 0 to 14
    std::array<Row, SlotCount> wide{};   ///< classes from 15
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
    /// By slot: where the repetition that covers the current position ends. Valid only for slots
    /// that repeat there.
    using Ends = std::array<std::uint32_t, SlotCount>;

    void findRepeats();
    [[nodiscard]] std::uint32_t repeatsAt(std::size_t place) const {
        std::uint32_t slots = 0;
        for (std::size_t i = 0; i < repeats.size(); ++i) {
            slots |= std::uint32_t{repeats[i][place]} << i * PlaneSlots;
        }
        return slots;
    }
    void tryMatches(std::size_t place, std::uint32_t slots, const Ends& ends);
    void tryWideMatches(std::size_t place, std::uint32_t slots, const Ends& ends);
    void consider(std::size_t place, std::size_t slot, unsigned length, std::int32_t cost) {
        const std::int32_t total = cost + costs[place + length];
        if (total > costs[place]) return;
        costs[place] = total;
        steps[place] = {static_cast<std::uint16_t>(length), static_cast<std::uint16_t>(slot)};
    }

    const ParseModel& model;
    const std::uint8_t* bytes = nullptr;
    std::size_t size = 0;

    /// By position: the slots whose distance has the same byte; eight slots per plane.
    static constexpr std::size_t PlaneSlots = 8;
    std::array<std::vector<std::uint8_t>, SlotCount / PlaneSlots> repeats;
    std::vector<std::int32_t> costs;  ///< of the rest of the block, by position
    std::vector<Step> steps;
};

}  // namespace brivok::tables
