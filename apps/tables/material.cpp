#include "material.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "egtb/descriptors.h"
#include "egtb/signature.h"

namespace brivok::tables {
namespace {

PieceCounts countsOf(const Material& material) {
    PieceCounts counts{};
    for (std::size_t i = 0; i < material.count; ++i) {
        if (material.man[i] == Gone || material.man[i] == Kind::King) continue;
        ++counts[material.side[i] * CountedKinds + tablePlaceOf(material.man[i])];
    }
    return counts;
}

}  // namespace

bool Material::has(Kind kind, unsigned ofSide) const {
    for (std::size_t i = 0; i < count; ++i) {
        if (man[i] == kind && side[i] == ofSide) return true;
    }
    return false;
}

std::vector<Exchange> exchangesOf(const Material& material) {
    Exchange none{};
    std::iota(none.begin(), none.end(), std::uint8_t{0});
    std::vector<Exchange> exchanges = {none};
    for (std::size_t first = 2; first < material.count;) {
        std::size_t end = first + 1;
        while (end < material.count && material.likeTheOneBefore(end)) ++end;
        const std::size_t before = exchanges.size();
        for (std::size_t i = 0; i < before; ++i) {
            Exchange next = exchanges[i];
            const auto run = next.begin() + static_cast<std::ptrdiff_t>(first);
            const auto runEnd = next.begin() + static_cast<std::ptrdiff_t>(end);
            while (std::next_permutation(run, runEnd)) exchanges.push_back(next);
        }
        first = end;
    }
    return exchanges;
}

Material materialOf(std::string_view signature) {
    Material material;
    const auto add = [&material](Kind kind, unsigned side) {
        material.man[material.count] = kind;
        material.side[material.count++] = static_cast<std::uint8_t>(side);
    };
    add(Kind::King, 0);
    add(Kind::King, 1);
    const PieceCounts counts = brivok::countsOf(signature);
    for (unsigned side = 0; side < 2; ++side) {
        for (std::size_t kind = CountedKinds; kind-- > 0;) {
            for (int men = counts[side * CountedKinds + kind]; men > 0; --men) {
                add(TableKinds[kind], side);
            }
        }
    }
    return material;
}

TableRef tableOf(const Material& material) {
    static const auto ids = [] {
        std::map<PieceCounts, int> map;
        for (const TablebaseDescriptor& table : tablebaseDescriptors) {
            map.emplace(brivok::countsOf(table.signature()), table.id);
        }
        return map;
    }();
    const PieceCounts counts = countsOf(material);
    if (const auto found = ids.find(counts); found != ids.end()) return {found->second, false};
    return {ids.at(withSidesSwapped(counts)), true};
}

Material convert(const Material& material, const Conversion& conversion) {
    Material after = material;
    if (conversion.captured != 0) after.man[conversion.captured] = Gone;
    if (conversion.promoted != 0) after.man[conversion.promoted] = conversion.into;
    return after;
}

std::vector<Conversion> conversionsOf(const Material& material) {
    std::vector<Conversion> conversions;
    for (std::size_t captured = 0; captured < material.count; ++captured) {
        if (captured == 1) continue;
        if (captured != 0) conversions.push_back({captured, 0, Gone});
        for (std::size_t pawn = 2; pawn < material.count; ++pawn) {
            if (material.man[pawn] != Kind::Pawn) continue;
            // Pawns capture only men of the other side.
            if (captured != 0 && material.side[captured] == material.side[pawn]) continue;
            for (const Kind into : PromotedMen) conversions.push_back({captured, pawn, into});
        }
    }
    return conversions;
}

std::vector<int> tablesBelow(int id) {
    const Material material = materialOf(descriptorOf(id).signature());
    std::vector<int> ids;
    for (const Conversion& conversion : conversionsOf(material)) {
        ids.push_back(tableOf(convert(material, conversion)).id);
    }
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    if (!ids.empty() && ids.front() == 0) ids.erase(ids.begin());
    return ids;
}

}  // namespace brivok::tables
