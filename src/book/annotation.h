#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace brivok {

/// A judgement of a move that a book can hold.
struct Annotation {
    std::uint32_t value;     ///< in a BookRecord
    std::string_view glyph;  ///< as players write it
    unsigned numericGlyph;   ///< its number among the numeric glyphs of PGN
    int factor;              ///< a score is taken so many times,
    int divisor;             ///< and then divided
};

/// All of them, by rising value: each is a bit, from the lowest up.
inline constexpr std::array<Annotation, 6> Annotations{{{1, "!!", 3, 4, 1},
                                                        {2, "!", 1, 3, 1},
                                                        {4, "!?", 5, 2, 1},
                                                        {8, "?!", 6, 1, 2},
                                                        {16, "?", 2, 1, 3},
                                                        {32, "??", 4, 1, 4}}};

/// The value of a record without a judgement.
inline constexpr std::uint32_t NoAnnotation = 0;

}  // namespace brivok
