#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "book/annotation.h"

namespace brivok {

/// The annotation value of a glyph or a NAG; NoAnnotation if there is none.
[[nodiscard]] std::uint32_t annotationOfGlyph(std::string_view glyph);
[[nodiscard]] std::uint32_t annotationOfNumber(unsigned numericGlyph);

/// Collects the annotations that games give to one position and decides which one the book keeps:
/// the most frequent one, and among equals the one with the lowest value. Games without an
/// annotation do not vote.
class AnnotationVotes {
public:
    void add(std::uint32_t annotation, std::uint64_t games);
    [[nodiscard]] std::uint32_t winner() const;

private:
    std::array<std::uint64_t, Annotations.size()> votes{};
};

}  // namespace brivok
