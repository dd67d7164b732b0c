#pragma once

#include <cstdint>

namespace brivok {

/// Up to eight squares of the table files, one to a byte: what befalls all men of a position, such
/// as a reflection of the board, or is asked about all of them, is a few operations on one word.
using SquareWord = std::uint64_t;

inline constexpr SquareWord EveryByte = 0x0101010101010101;  ///< the number 1 in each of the bytes

/// Exclusive-or masks of single squares: these turn the files, or the ranks, the other way round.
inline constexpr unsigned FileFlip = 7;
inline constexpr unsigned RankFlip = 56;  ///< of ranks

/// In a byte that is no man, this is on a higher square than every man.
inline constexpr SquareWord NoMan = 0x7F;

/// The square in a byte, 0 to 7.
[[nodiscard]] constexpr unsigned squareIn(SquareWord word, unsigned byte) {
    return static_cast<unsigned>(word >> (8 * byte)) & 0xFFU;
}

/// A word with the square in one byte, 0 to 7, and nothing else.
[[nodiscard]] constexpr SquareWord squareAtByte(std::uint64_t square, unsigned byte) {
    return square << (8 * byte);
}

/// The same flip of every square.
[[nodiscard]] constexpr SquareWord flipped(SquareWord word, std::uint64_t flip) {
    return word ^ (flip * EveryByte);
}

/// Every square reflected in the a1-h8 diagonal.
[[nodiscard]] constexpr SquareWord transposed(SquareWord word) {
    return ((word & (7 * EveryByte)) << 3) | ((word >> 3) & (7 * EveryByte));
}

/// How many squares of the word are below `square` (0 .. 64). Each byte of the difference keeps
/// its high bit where there was nothing to borrow.
[[nodiscard]] constexpr unsigned countBelow(SquareWord word, unsigned square) {
    constexpr SquareWord HighBits = 0x80 * EveryByte;
    const SquareWord notBelow = (word | HighBits) - square * EveryByte;
    return static_cast<unsigned>((((~notBelow & HighBits) >> 7) * EveryByte) >> 56);
}

/// The bytes of the bit set `bytes` keep their squares, the others read as NoMan.
[[nodiscard]] constexpr SquareWord paddingOutside(unsigned bytes) {
    SquareWord padding = 0;
    for (unsigned byte = 0; byte < 8; ++byte) {
        if ((bytes >> byte & 1) == 0) padding |= squareAtByte(NoMan, byte);
    }
    return padding;
}

}  // namespace brivok
