#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace brivok {

/// The men that the table files number, from the weakest. A free pawn belongs to the side that is
/// not to move, so that it may attack the king.
enum class ManType : std::uint8_t { FreePawn, Pawn, Knight, Bishop, Rook, Queen };

inline constexpr std::size_t ManTypes = 6;  ///< values of ManType

/// The man is a pawn, free or not.
[[nodiscard]] constexpr bool isPawn(ManType type) { return type <= ManType::Pawn; }

/// C(n, k) for 1 to 3 men on n squares. Taken without a table, so that no number of a man leads
/// outside of one.
[[nodiscard]] constexpr std::uint64_t choose(std::uint64_t n, unsigned men) {
    if (men == 1) return n;
    const std::uint64_t pairs = n * (n - 1) / 2;
    return men == 2 ? pairs : pairs * (n - 2) / 3;
}

/// The squares on which men of a type may stand while the enemy king, not in check from next to it,
/// stands on a given square.
struct Enumeration {
    static constexpr std::uint8_t Forbidden = 255;  ///< `number` of a square that is not allowed

    std::array<std::uint8_t, 64> number{};  ///< by square: its place among the squares allowed
    std::array<std::uint8_t, 64> square{};  ///< by number
    std::uint8_t count = 0;                 ///< squares allowed
};

/// By type of man, then by the square of the enemy king.
extern const std::array<std::array<Enumeration, 64>, ManTypes> enumerations;

/// An enumeration less the square that the king of the side to move takes, if it takes one.
class GroupSquares {
public:
    /// For men of `type`, with both kings on these squares. `enumerations` outlives it.
    GroupSquares(ManType type, unsigned moverKing, unsigned otherKing)
        : squares(enumerations[static_cast<std::size_t>(type)][otherKing]),
          king(moverKing),
          kingNumber(squares.number[moverKing]) {}

    /// The number of squares.
    [[nodiscard]] unsigned count() const { return squares.count - (kingTakesOne() ? 1U : 0U); }

    /// The enumeration has this square.
    [[nodiscard]] bool allows(unsigned square) const {
        return squares.number[square] != Enumeration::Forbidden;
    }
    /// The place of a square that is allowed.
    [[nodiscard]] unsigned numberOf(unsigned square) const {
        return squares.number[square] - static_cast<unsigned>(kingTakesOne() & (king < square));
    }
    /// The square at a place below count().
    [[nodiscard]] unsigned squareOf(unsigned number) const {
        return squares.square[number + (number >= kingNumber ? 1 : 0)];
    }

private:
    [[nodiscard]] bool kingTakesOne() const { return kingNumber != Enumeration::Forbidden; }

    const Enumeration& squares;
    unsigned king;
    unsigned kingNumber;
};

/// The placements of two kings that tell all symmetric ones: that of the side to move, then the
/// other's.
struct KingPairs {
    static constexpr std::int16_t Missing = -1;  ///< `number` of two squares that are no placement

    std::array<std::array<std::int16_t, 64>, 64> number{};  ///< by the two squares
    std::array<std::array<std::uint8_t, 2>, 1806> kings{};  ///< by number
    std::size_t count = 0;                                  ///< placements
};

extern const KingPairs kingPairs1806;  ///< with pawns: first king on the files a to d
extern const KingPairs kingPairs462;   ///< without pawns: first king in the triangle a1-d1-d4

}  // namespace brivok
