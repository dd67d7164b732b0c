#include "material.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string>

#include "egtb/descriptors.h"

namespace brivok::tables {
namespace {

constexpr std::string_view ManLetters = "pnbrqk";

/// King and men of a side, from the strongest.
std::string lettersOf(const Material& material, unsigned side) {
    std::string letters;
    for (std::size_t kind = ManLetters.size(); kind-- > 0;) {
        for (std::size_t i = 0; i < material.count; ++i) {
            if (material.man[i] == static_cast<Man>(kind) && material.side[i] == side) {
                letters += ManLetters[kind];
            }
        }
    }
    return letters;
}

const std::map<std::string, int, std::less<>>& idsBySignature() {
    static const auto ids = [] {
        std::map<std::string, int, std::less<>> map;
        for (const TablebaseDescriptor& table : tablebaseDescriptors) {
            map.emplace(table.signature(), table.id);
        }
        return map;
    }();
    return ids;
}

}  // namespace

bool Material::has(Man kind, unsigned ofSide) const {
    for (std::size_t i = 0; i < count; ++i) {
        if (man[i] == kind && side[i] == ofSide) return true;
    }
    return false;
}

Material materialOf(std::string_view signature) {
    Material material;
    material.count = signature.size();
    material.man[0] = material.man[1] = Man::King;
    material.side[1] = 1;
    std::size_t next = 2;
    std::uint8_t side = 0;
    for (const char letter : signature.substr(1)) {
        if (letter == 'k') {
            side = 1;
            continue;
        }
        material.man[next] = static_cast<Man>(ManLetters.find(letter));
        material.side[next++] = side;
    }
    return material;
}

TableRef tableOf(const Material& material) {
    const std::string first = lettersOf(material, 0);
    const std::string second = lettersOf(material, 1);
    const auto& ids = idsBySignature();
    if (const auto found = ids.find(first + second); found != ids.end()) {
        return {found->second, false};
    }
    return {ids.at(second + first), true};
}

Material convert(const Material& material, const Conversion& conversion) {
    Material after = material;
    if (conversion.captured != 0) after.man[conversion.captured] = Man::Gone;
    if (conversion.promoted != 0) after.man[conversion.promoted] = conversion.into;
    return after;
}

std::vector<Conversion> conversionsOf(const Material& material) {
    std::vector<Conversion> conversions;
    for (std::size_t captured = 0; captured < material.count; ++captured) {
        if (captured == 1) continue;
        if (captured != 0) conversions.push_back({captured, 0, Man::Gone});
        for (std::size_t pawn = 2; pawn < material.count; ++pawn) {
            if (material.man[pawn] != Man::Pawn) continue;
            // Pawns take men of the other side only.
            if (captured != 0 && material.side[captured] == material.side[pawn]) continue;
            for (const Man into : PromotedMen) conversions.push_back({captured, pawn, into});
        }
    }
    return conversions;
}

std::vector<int> tablesBelow(int id) {
    const Material material =
        materialOf(tablebaseDescriptors[static_cast<std::size_t>(id)].signature());
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
