#include "annotation.h"

#include <algorithm>

#include "book/opening_book.h"

namespace brivok {

std::uint32_t annotationOfGlyph(std::string_view glyph) {
    for (const AnnotationKind& kind : AnnotationKinds) {
        if (AnnotationText(kind.value) == glyph) return kind.value;
    }
    return NoAnnotation;
}

std::uint32_t annotationOfNumber(unsigned numericGlyph) {
    for (const AnnotationKind& kind : AnnotationKinds) {
        if (kind.numericGlyph == numericGlyph) return kind.value;
    }
    return NoAnnotation;
}

void AnnotationVotes::add(std::uint32_t annotation, std::uint64_t games) {
    for (std::size_t i = 0; i < votes.size(); ++i) {
        if (AnnotationKinds[i].value == annotation) votes[i] += games;
    }
}

std::uint32_t AnnotationVotes::winner() const {
    const auto* const most = std::ranges::max_element(votes);
    return *most == 0 ? NoAnnotation
                      : AnnotationKinds[static_cast<std::size_t>(most - votes.begin())].value;
}

}  // namespace brivok
