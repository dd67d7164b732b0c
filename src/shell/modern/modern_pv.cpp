#include "shell/modern/modern_pv.h"

#include "shell/principal_variation.h"

namespace brivok {

std::string ModernPv::render(const SearchProgress& progress, Notation notation) {
    return renderPv(progress, notation == Notation::San ? PvStyle::San : PvStyle::Coordinate);
}

std::string ModernPv::render(const SearchProgress& progress, std::span<const Move> /*line*/,
                             Notation notation) {
    return render(progress, notation);
}

}  // namespace brivok
