#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "book/annotation.h"

namespace brivok {

/// The value of a glyph or of a numeric glyph; NoAnnotation for any other.
[[nodiscard]] std::uint32_t annotationOfGlyph(std::string_view glyph);
[[nodiscard]] std::uint32_t annotationOfNumber(unsigned numericGlyph);

/// Gathers the annotations that games give to one position and settles which one a book keeps: the
/// one given most often by those that give any, and among equals the one of the lowest value.
class AnnotationVotes {
public:
    void add(std::uint32_t annotation, std::uint64_t games);
    [[nodiscard]] std::uint32_t winner() const;

private:
    std::array<std::uint64_t, Annotations.size()> votes{};
};

}  // namespace brivok
