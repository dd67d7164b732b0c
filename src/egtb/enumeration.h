#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace brivok {

/// The kinds of men that the tables number, weakest first. A FreePawn belongs to the side not to
/// move, so it may attack the king.
enum class ManType : std::uint8_t { FreePawn, Pawn, Knight, Bishop, Rook, Queen };

inline constexpr std::size_t ManTypes = 6;

/// The type as an array index.
[[nodiscard]] constexpr std::size_t indexOf(ManType type) { return static_cast<std::size_t>(type); }

/// Whether the man is a pawn, free or not.
[[nodiscard]] constexpr bool isPawn(ManType type) { return type <= ManType::Pawn; }

/// C(n, k) for 1 to 3 men on n squares. Computed, not looked up, so no argument can index outside a
/// table.
[[nodiscard]] constexpr std::uint64_t choose(std::uint64_t n, unsigned men) {
    if (men == 1) return n;
    const std::uint64_t pairs = n * (n - 1) / 2;
    return men == 2 ? pairs : pairs * (n - 2) / 3;
}

/// The squares where men of one type may stand for a given square of the enemy king, which they
/// must not check from close by.
struct Enumeration {
    static constexpr std::uint8_t Forbidden = 255;  ///< `number` of a square that is not allowed

    std::array<std::uint8_t, 64> number{};  ///< by square: its index among the allowed squares
    std::array<std::uint8_t, 64> square{};  ///< the inverse
    std::uint8_t count = 0;                 ///< allowed squares
};

/// By type of man, then by square of the enemy king.
extern const std::array<std::array<Enumeration, 64>, ManTypes> enumerations;

/// An enumeration without the square of the king of the side to move, if that is one of its
/// squares.
class GroupSquares {
public:
    /// For men of `type` and these squares of the kings.
    GroupSquares(ManType type, unsigned moverKing, unsigned otherKing)
        : squares(enumerations[indexOf(type)][otherKing]),
          king(moverKing),
          kingNumber(squares.number[moverKing]) {}

    [[nodiscard]] unsigned count() const { return squares.count - (kingTakesOne() ? 1U : 0U); }

    /// Whether the enumeration contains the square.
    [[nodiscard]] bool allows(unsigned square) const {
        return squares.number[square] != Enumeration::Forbidden;
    }
    /// The index of an allowed square.
    [[nodiscard]] unsigned numberOf(unsigned square) const {
        return squares.number[square] - static_cast<unsigned>(kingTakesOne() & (king < square));
    }
    /// The square with an index below count().
    [[nodiscard]] unsigned squareOf(unsigned number) const {
        return squares.square[number + (number >= kingNumber ? 1 : 0)];
    }

private:
    [[nodiscard]] bool kingTakesOne() const { return kingNumber != Enumeration::Forbidden; }

    const Enumeration& squares;
    unsigned king;
    unsigned kingNumber;
};

/// The placements of two kings, one for each class of symmetric ones. The king of the side to move
/// comes first.
struct KingPairs {
    /// `number` of two squares that are not a placement.
    static constexpr std::uint16_t Missing = 0xFFFF;

    std::array<std::array<std::uint16_t, 64>, 64> number{};  ///< by both squares
    std::array<std::array<std::uint8_t, 2>, 1806> kings{};   ///< by number
    std::uint16_t count = 0;
};

extern const KingPairs kingPairs1806;  ///< for tables with pawns: first king on files a to d
/// For tables without pawns: first king in the triangle a1-d1-d4.
extern const KingPairs kingPairs462;

}  // namespace brivok
