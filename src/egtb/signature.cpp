#include "egtb/signature.h"

#include <algorithm>
#include <cassert>

namespace brivok {

PieceCounts countsOf(std::string_view signature) {
    PieceCounts counts{};
    std::size_t sidesBegun = 0;
    for (const char letter : signature) {
        const std::optional<Kind> kind = kindOfLetter(static_cast<char>(letter - 'a' + 'A'));
        assert(kind);
        if (kind == Kind::King) {
            ++sidesBegun;
        } else {
            ++counts[(sidesBegun - 1) * CountedKinds + tablePlaceOf(*kind)];
        }
    }
    return counts;
}

PieceCounts withSidesSwapped(PieceCounts counts) {
    std::rotate(counts.begin(), counts.begin() + CountedKinds, counts.end());
    return counts;
}

}  // namespace brivok
