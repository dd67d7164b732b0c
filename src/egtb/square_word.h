#pragma once

#include <cstdint>

namespace brivok {

/// Up to eight squares of the table files, one per byte. An operation on all men of a position,
/// such as reflecting the board, takes a few operations on one word.
using SquareWord = std::uint64_t;

inline constexpr SquareWord EveryByte = 0x0101010101010101;  ///< 1 in each byte

/// XOR masks for a square: these reverse the files or the ranks.
inline constexpr unsigned FileFlip = 7;
inline constexpr unsigned RankFlip = 56;

/// Stands for no man: higher than every square.
inline constexpr SquareWord NoMan = 0x7F;

/// The square in a byte (0 to 7).
[[nodiscard]] constexpr unsigned squareIn(SquareWord word, unsigned byte) {
    return word >> (8 * byte) & 0xFFU;
}

/// A word with only the given byte (0 to 7) set.
[[nodiscard]] constexpr SquareWord squareAtByte(std::uint64_t square, unsigned byte) {
    return square << (8 * byte);
}

/// Flips every square.
[[nodiscard]] constexpr SquareWord flipped(SquareWord word, std::uint64_t flip) {
    return word ^ (flip * EveryByte);
}

/// Reflects every square in the a1-h8 diagonal.
[[nodiscard]] constexpr SquareWord transposed(SquareWord word) {
    return ((word & (7 * EveryByte)) << 3) | ((word >> 3) & (7 * EveryByte));
}

/// How many squares of the word are below `square` (0 to 64). A byte of the difference keeps its
/// high bit if it did not borrow.
[[nodiscard]] constexpr unsigned countBelow(SquareWord word, unsigned square) {
    constexpr SquareWord HighBits = 0x80 * EveryByte;
    const SquareWord notBelow = (word | HighBits) - square * EveryByte;
    return static_cast<unsigned>((((~notBelow & HighBits) >> 7) * EveryByte) >> 56);
}

/// ORed with a word, turns all bytes outside the bit set `bytes` into NoMan.
[[nodiscard]] constexpr SquareWord paddingOutside(unsigned bytes) {
    SquareWord padding = 0;
    for (unsigned byte = 0; byte < 8; ++byte) {
        if ((bytes >> byte & 1) == 0) padding |= squareAtByte(NoMan, byte);
    }
    return padding;
}

}  // namespace brivok
