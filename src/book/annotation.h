#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace brivok {

/// A move annotation that a book can store.
struct Annotation {
    std::uint32_t value;     ///< in a BookRecord
    std::string_view glyph;  ///< as written in a game score
    unsigned numericGlyph;   ///< its numeric annotation glyph (NAG) in PGN
    int factor;              ///< a score is multiplied by this,
    int divisor;             ///< then divided by this
};

/// All annotations, by rising value. Each value is one bit.
inline constexpr std::array<Annotation, 6> Annotations{{{1, "!!", 3, 4, 1},
                                                        {2, "!", 1, 3, 1},
                                                        {4, "!?", 5, 2, 1},
                                                        {8, "?!", 6, 1, 2},
                                                        {16, "?", 2, 1, 3},
                                                        {32, "??", 4, 1, 4}}};

inline constexpr std::uint32_t NoAnnotation = 0;

}  // namespace brivok
