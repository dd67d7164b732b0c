#include "annotation.h"

#include <algorithm>

namespace brivok {

namespace {

/// The value of the annotation with this content in a field; NoAnnotation if there is none.
template <typename Field, typename Content>
std::uint32_t valueOf(Field Annotation::*field, const Content& content) {
    const auto* const found = std::ranges::find(Annotations, content, field);
    return found == Annotations.end() ? NoAnnotation : found->value;
}

}  // namespace

std::uint32_t annotationOfGlyph(std::string_view glyph) {
    return valueOf(&Annotation::glyph, glyph);
}

std::uint32_t annotationOfNumber(unsigned numericGlyph) {
    return valueOf(&Annotation::numericGlyph, numericGlyph);
}

void AnnotationVotes::add(std::uint32_t annotation, std::uint64_t games) {
    for (std::size_t i = 0; i < votes.size(); ++i) {
        if (Annotations[i].value == annotation) votes[i] += games;
    }
}

std::uint32_t AnnotationVotes::winner() const {
    const auto* const most = std::ranges::max_element(votes);
    return *most == 0 ? NoAnnotation
                      : Annotations[static_cast<std::size_t>(most - votes.begin())].value;
}

}  // namespace brivok
