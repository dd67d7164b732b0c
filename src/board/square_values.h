#pragma once

#include <cstdint>

#include "board/types.h"

/// @file
/// What a knight, bishop, rook or queen is worth by its square alone, in centipawns. The sum over
/// all men changes by a few additions in a half-move, so the board keeps it; pawns and kings, whose
/// worth depends on more than their square, count 0 here.
namespace brivok {

namespace weights {

/// A value per square, laid out as White sees the board: the first line is rank 8, files a to h.
/// For Black the rows are reversed.
using SquareTable = std::int16_t[64];

inline constexpr SquareTable knightTable{
    // clang-format off
    -20, -12, -10, -10, -10, -10, -12, -20,
    -14,  -8,   0,   3,   3,   0,  -8, -14,
    -13,  -2,   5,   5,   5,   5,  -2, -13,
    -12,  -2,   5,  10,  10,   5,  -2, -12,
    -12,  -2,   5,  10,  10,   5,  -2, -12,
    -13,  -2,   5,   5,   5,   5,  -2, -13,
    -14,  -8,   0,   3,   3,   0,  -8, -14,
    -20, -12, -10, -10, -10, -10, -12, -20,
    // clang-format on
};

inline constexpr SquareTable bishopTable{
    // clang-format off
    -2, -2, -2, -2, -2, -2, -2, -2,
    -2,  8,  5,  5,  5,  5,  8, -2,
    -2,  3,  3,  5,  5,  3,  3, -2,
    -2,  2,  5,  4,  4,  5,  2, -2,
    -2,  2,  5,  4,  4,  5,  2, -2,
    -2,  3,  3,  5,  5,  3,  3, -2,
    -2,  8,  5,  5,  5,  5,  8, -2,
    -2, -2, -2, -2, -2, -2, -2, -2,
    // clang-format on
};

/// By file.
inline constexpr std::int16_t rookFileTable[8]{0, 0, 4, 6, 6, 4, 0, 0};

inline constexpr SquareTable queenTable{
    // clang-format off
    -10, -8, -4,  0,  0, -4, -8, -10,
    -12, -2,  4,  5,  5,  4, -2, -12,
     -2,  2,  4,  8,  8,  4,  2,  -2,
     -2,  2,  6, 10, 10,  6,  2,  -2,
    -10,  2,  6, 10, 10,  6,  2, -10,
    -10, -6,  4,  8,  8,  4, -6, -10,
    -10,  2,  8,  8,  8,  8,  2, -10,
    -10, -8, -4,  0,  0, -4, -8, -10,
    // clang-format on
};

}  // namespace weights

/// Values by piece code and square.
struct PlaceValues {
    std::int16_t values[PieceCodes][64];
    [[nodiscard]] constexpr const std::int16_t (&operator[](Piece piece) const)[64] {
        return values[piece];
    }
};

namespace detail {
consteval PlaceValues placeValues() {
    PlaceValues table{};
    for (Square sq = 0; sq < 64; ++sq) {
        const Square mirrored = sq ^ 56;
        const auto fill = [&](Kind kind, std::int16_t white, std::int16_t black) {
            table.values[pieceOf(kind, White)][sq] = white;
            table.values[pieceOf(kind, Black)][sq] = static_cast<std::int16_t>(-black);
        };
        const std::int16_t rook = weights::rookFileTable[fileOf(sq)];
        fill(Kind::Knight, weights::knightTable[sq], weights::knightTable[mirrored]);
        fill(Kind::Bishop, weights::bishopTable[sq], weights::bishopTable[mirrored]);
        fill(Kind::Rook, rook, rook);
        fill(Kind::Queen, weights::queenTable[sq], weights::queenTable[mirrored]);
    }
    return table;
}
}  // namespace detail

/// From White's view: a black man's value is negative.
inline constexpr PlaceValues placeValue = detail::placeValues();

}  // namespace brivok
