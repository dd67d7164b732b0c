#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "board/bitboard.h"
#include "egtb/index_plan.h"
#include "material.h"
#include "parallel.h"

namespace brivok::tables {

/// Visits the entries of a table file's plain section: those without an en passant square. The men
/// are placed in nested loops, in the order in which the file numbers them, so that neither the
/// index nor the squares are computed anew for each entry.
class FileWalk {
public:
    FileWalk(int id, const Material& itsMaterial, unsigned side);

    /// Pairs of kings, one after the other in the file. No position of one equals any of another.
    [[nodiscard]] unsigned pairs() const { return plan.plain.group.pairs->count; }

    /// The index of the first entry of a pair; size() for the number of pairs.
    [[nodiscard]] std::uint64_t first(unsigned pair) const {
        return plan.plain.group.start[pair] * plan.plain.group.weight;
    }

    /// Number of entries, the index of the first one after the section.
    [[nodiscard]] std::uint64_t size() const { return plan.plain.count; }

    /// Calls visit(index, squares by man) for each entry of a pair whose men stand on different
    /// squares. Not all are legal.
    template <typename Visit>
    void visitPair(unsigned pair, Visit visit) const {
        const GroupDigit& group = plan.plain.group;
        State state;
        state.kings = group.pairs->kings[pair];
        state.put(*this, state.kings[0] ^ group.flip, MoverKingByte);
        state.put(*this, state.kings[1] ^ group.flip, OtherKingByte);
        if (steps.empty()) {
            visit(first(pair), state.squares);
        } else {
            place(0, first(pair), first(pair + 1) - first(pair), state, visit);
        }
    }

    /// Does so for the pairs from `from` up to `to`, on this many threads.
    template <typename Visit>
    void visitPairs(unsigned threads, unsigned from, unsigned to, Visit visit) const {
        constexpr std::uint64_t EntriesInPiece = 1 << 16;
        inParallel(
            threads, to - from,
            [&](std::uint64_t begin, std::uint64_t end) {
                for (std::uint64_t pair = begin; pair < end; ++pair) {
                    visitPair(from + static_cast<unsigned>(pair), visit);
                }
            },
            std::max<std::uint64_t>(1, pairs() * EntriesInPiece / size()));
    }

    /// Does so for all pairs.
    template <typename Visit>
    void visitAll(unsigned threads, Visit visit) const {
        visitPairs(threads, 0, pairs(), visit);
    }

private:
    /// Places one man. The men of a run are placed in ascending order, so that each has a weight of
    /// its own in the index of their set.
    struct Step {
        unsigned byte = 0;
        unsigned ordinal = 0;             ///< in its run
        const MenRun* run = nullptr;      ///< if placed with the kings
        const MenDigit* digit = nullptr;  ///< otherwise
    };

    struct State {
        std::array<std::uint8_t, 2> kings{};  ///< as the pair numbers them
        std::array<std::uint8_t, 8> byByte{};
        Squares squares{};
        Bitboard occupied = 0;
        Bitboard allowed = 0;      ///< to the run that is being placed
        unsigned number = 0;       ///< of the next square that is allowed to it
        std::uint64_t weight = 0;  ///< of its set in the index

        void put(const FileWalk& walk, unsigned square, unsigned byte) {
            byByte[byte] = static_cast<std::uint8_t>(square);
            squares[walk.manAt[byte]] = static_cast<std::uint8_t>(square ^ walk.plan.rankFlip);
            occupied |= bit[square];
        }
    };

    void beginRun(const Step& step, State& state, std::uint64_t& groupWeight) const;

    template <typename Visit>
    void place(std::size_t stepNumber, std::uint64_t index, std::uint64_t groupWeight, State state,
               Visit& visit) const {
        const Step& step = steps[stepNumber];
        if (step.ordinal == 0) beginRun(step, state, groupWeight);
        const Bitboard occupied = state.occupied;
        const unsigned flip = step.run != nullptr ? plan.plain.group.flip : 0U;
        while (state.allowed != 0) {
            const auto square = static_cast<unsigned>(takeNext<White>(state.allowed)) ^ flip;
            const std::uint64_t here =
                index + choose(state.number++, step.ordinal + 1) * state.weight;
            if ((occupied & bit[square]) != 0) continue;
            state.occupied = occupied;
            state.put(*this, square, step.byte);
            if (stepNumber + 1 == steps.size()) {
                visit(here, state.squares);
            } else {
                place(stepNumber + 1, here, groupWeight, state, visit);
            }
        }
    }

    const IndexPlan& plan;
    std::array<std::uint8_t, 8> manAt{};  ///< index of the man by byte
    std::vector<Step> steps;
};

}  // namespace brivok::tables
