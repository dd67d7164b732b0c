#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "board/types.h"

/// The men of a table. Within the generator White is always the first side of a table's signature.
/// A man is identified by its index in the Material; the two kings come first.
namespace brivok::tables {

/// The kind of a captured man.
inline constexpr Kind Gone{};

/// What a pawn may promote to.
inline constexpr std::array PromotedMen = {Kind::Queen, Kind::Rook, Kind::Bishop, Kind::Knight};

inline constexpr std::size_t MaxMen = 6;  ///< including the kings

/// Squares of the men, a1 = 0 to h8 = 63.
using Squares = std::array<std::uint8_t, MaxMen>;

struct Material {
    std::size_t count = 0;
    std::array<Kind, MaxMen> man{};
    std::array<std::uint8_t, MaxMen> side{};  ///< 0 is the first side, 1 the second

    [[nodiscard]] bool has(Kind kind, unsigned ofSide) const;
    [[nodiscard]] bool hasPawns() const { return has(Kind::Pawn, 0) || has(Kind::Pawn, 1); }
    /// Whether both sides have pawns.
    [[nodiscard]] bool hasEnPassant() const { return has(Kind::Pawn, 0) && has(Kind::Pawn, 1); }
    /// Whether the man has the same kind and side as the one before it.
    [[nodiscard]] bool likeTheOneBefore(std::size_t index) const {
        return man[index] == man[index - 1] && side[index] == side[index - 1];
    }
};

/// For each way to exchange like men, the one that leaves all as they are first: by man, the man
/// whose square it takes.
using Exchange = std::array<std::uint8_t, MaxMen>;
[[nodiscard]] std::vector<Exchange> exchangesOf(const Material& material);

/// The men of a signature such as "kbnk".
[[nodiscard]] Material materialOf(std::string_view signature);

/// The table for some men: its id, 0 for bare kings, and whether its first side is the second side
/// of the men.
struct TableRef {
    int id = 0;
    bool swapped = false;
};

/// Throws std::out_of_range if there is no such table.
[[nodiscard]] TableRef tableOf(const Material& material);

/// How a move can change the men: man `captured` is captured, pawn `promoted` becomes `into`. Index
/// 0, a king's, means none.
struct Conversion {
    std::size_t captured = 0;
    std::size_t promoted = 0;
    Kind into = Gone;
};

/// The men after a conversion, with a captured man as Gone.
[[nodiscard]] Material convert(const Material& material, const Conversion& conversion);

/// All conversions, with either side to move.
[[nodiscard]] std::vector<Conversion> conversionsOf(const Material& material);

/// The tables that one move can lead to, without the bare kings.
[[nodiscard]] std::vector<int> tablesBelow(int id);

}  // namespace brivok::tables
