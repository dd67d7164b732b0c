#pragma once

#include <cstdint>
#include <string>

#include "material.h"
#include "moves.h"
#include "outcome.h"

namespace brivok::tables {

/// The position for an entry of a table's file; false if there is none or it is illegal.
[[nodiscard]] bool legalPosition(int id, const Material& material, unsigned side,
                                 std::uint64_t index, Position& position);

/// An entry that contradicts its successors.
struct EntryFault {
    std::uint64_t index = 0;
    Outcome stored = NoValue;
    Outcome expected = NoValue;  ///< NoValue also for what the entry cannot hold
};

[[nodiscard]] std::string fenOf(const Material& material, const Position& position);

}  // namespace brivok::tables
