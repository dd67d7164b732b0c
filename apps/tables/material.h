#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "board/types.h"

/// The men of a table. Within the generator White is always the first side of a table's signature;
/// men are known by their place in the Material, first the two kings.
namespace brivok::tables {

/// The kind of a man that has been taken.
inline constexpr Kind Gone{};

/// What a pawn may become.
inline constexpr std::array PromotedMen = {Kind::Queen, Kind::Rook, Kind::Bishop, Kind::Knight};

inline constexpr std::size_t MaxMen = 5;  ///< kings included

/// Squares of the men, a1 = 0 .. h8 = 63.
using Squares = std::array<std::uint8_t, MaxMen>;

struct Material {
    std::size_t count = 0;
    std::array<Kind, MaxMen> man{};
    std::array<std::uint8_t, MaxMen> side{};  ///< 0 first side, 1 second side

    [[nodiscard]] bool has(Kind kind, unsigned ofSide) const;
    [[nodiscard]] bool hasPawns() const { return has(Kind::Pawn, 0) || has(Kind::Pawn, 1); }
    /// Both sides have pawns, so that one can take another in passing.
    [[nodiscard]] bool hasEnPassant() const { return has(Kind::Pawn, 0) && has(Kind::Pawn, 1); }
    /// The man is of the kind and side of the one before it.
    [[nodiscard]] bool likeTheOneBefore(std::size_t index) const {
        return man[index] == man[index - 1] && side[index] == side[index - 1];
    }
};

/// The men of a signature such as "kbnk".
[[nodiscard]] Material materialOf(std::string_view signature);

/// The table that holds some men: its id, 0 for the bare kings, and whether its first side is the
/// second one of the men.
struct TableRef {
    int id = 0;
    bool swapped = false;
};

/// Throws std::out_of_range when there is no such table.
[[nodiscard]] TableRef tableOf(const Material& material);

/// What a move can change about the men: man `captured` is taken, pawn `promoted` becomes `into`.
/// Place 0, a king's, stands for none.
struct Conversion {
    std::size_t captured = 0;
    std::size_t promoted = 0;
    Kind into = Gone;
};

/// The men after a conversion, the one taken as Gone.
[[nodiscard]] Material convert(const Material& material, const Conversion& conversion);

/// All conversions of the men, with either side to move.
[[nodiscard]] std::vector<Conversion> conversionsOf(const Material& material);

/// The tables that positions of a table lead to by one move, without the bare kings.
[[nodiscard]] std::vector<int> tablesBelow(int id);

}  // namespace brivok::tables
