#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace brivok {

/// The judgements of moves that a book can hold, by rising value in a record (AnnotationText()
/// gives their glyphs), with their numbers among the numeric glyphs of PGN.
struct AnnotationKind {
    std::uint32_t value;
    unsigned numericGlyph;
};
inline constexpr std::array<AnnotationKind, 6> AnnotationKinds{
    {{1, 3}, {2, 1}, {4, 5}, {8, 6}, {16, 2}, {32, 4}}};

inline constexpr std::uint32_t NoAnnotation = 0;

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
    std::array<std::uint64_t, AnnotationKinds.size()> votes{};
};

}  // namespace brivok
