#include "file_walk.h"

#include "egtb/enumeration.h"
#include "egtb/piece_list.h"

namespace brivok::tables {
namespace {

/// The man of a kind and side, counted from 0.
std::uint8_t manOf(const Material& material, std::size_t place, unsigned side,
                   std::size_t ordinal) {
    std::size_t man = 0;
    for (;; ++man) {
        if (tablePlaceOf(material.man[man]) != place || material.side[man] != side) continue;
        if (ordinal-- == 0) return static_cast<std::uint8_t>(man);
    }
}

}  // namespace

FileWalk::FileWalk(int id, const Material& itsMaterial, unsigned side) : plan(indexPlan(id, side)) {
    manAt[MoverKingByte] = static_cast<std::uint8_t>(side);
    manAt[OtherKingByte] = static_cast<std::uint8_t>(side ^ 1U);
    for (unsigned i = 0; i < plan.menCount; ++i) {
        const auto [isMovers, slot] = plan.men[i];
        manAt[FirstManByte + i] = manOf(itsMaterial, slot / SlotsPerType,
                                        isMovers ? side : side ^ 1U, slot % SlotsPerType);
    }
    const IndexSection& section = plan.plain;
    for (std::size_t i = 0; i < section.group.runCount; ++i) {
        const MenRun& run = section.group.runs[i];
        for (unsigned man = 0; man < run.count; ++man) {
            steps.push_back({run.byte + man, man, &run, nullptr});
        }
    }
    for (std::size_t i = 0; i < section.digitCount; ++i) {
        const MenDigit& digit = section.digits[i];
        for (unsigned man = 0; man < digit.run.count; ++man) {
            steps.push_back({digit.run.byte + man, man, nullptr, &digit});
        }
    }
}

/// Finds the squares for the step's run and the weight of its set. `groupWeight` is the weight of
/// the run before it in the group.
void FileWalk::beginRun(const Step& step, State& state, std::uint64_t& groupWeight) const {
    state.allowed = 0;
    state.number = 0;
    if (step.run != nullptr) {
        const GroupSquares squares(step.run->type, state.kings[0], state.kings[1]);
        for (unsigned i = 0; i < squares.count(); ++i) state.allowed |= bit[squares.squareOf(i)];
        groupWeight /= choose(squares.count(), step.run->count);
        state.weight = groupWeight;
        return;
    }
    const MenDigit& digit = *step.digit;
    for (unsigned square = digit.lowest; square < 64U - digit.lowest; ++square) {
        state.allowed |= bit[square];
    }
    for (unsigned byte = 0; byte < state.byByte.size(); ++byte) {
        if (squareIn(digit.padding, byte) == 0) state.allowed &= ~bit[state.byByte[byte]];
    }
    state.weight = digit.weight;
}

}  // namespace brivok::tables
