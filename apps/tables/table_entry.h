#pragma once

#include <cstdint>
#include <string>

#include "material.h"
#include "moves.h"

namespace brivok::tables {

/// The position for an entry of a table's file; false if there is none or it is illegal.
[[nodiscard]] bool legalPosition(int id, const Material& material, unsigned side,
                                 std::uint64_t index, Position& position);

[[nodiscard]] std::string fenOf(const Material& material, const Position& position);

}  // namespace brivok::tables
