#include "table_reader.h"

namespace brivok::tables {

EntryFinder::EntryFinder(const Material& material) {
    const TableRef place = tableOf(material);
    id = place.id;
    swapped = place.swapped;
    std::array<std::size_t, 2 * (KingSlot + 1)> filled{};
    for (std::size_t i = 0; i < material.count; ++i) {
        if (material.man[i] == Gone) continue;
        const auto list = static_cast<std::uint8_t>(material.side[i] ^ (swapped ? 1U : 0U));
        const std::size_t slot = tablePlaceOf(material.man[i]) * SlotsPerType;
        const std::size_t ordinal = filled[list * (KingSlot + 1) + slot]++;
        men[count++] = {static_cast<std::uint8_t>(i), list,
                        static_cast<std::uint8_t>(slot + ordinal)};
    }
}

TableReader::TableReader(const Material& material, unsigned itsMover, TableStore& store)
    : finder(material), mover(itsMover) {
    if (finder.table() != 0) entries = &store.entries(finder.table(), finder.sideOf(mover));
}

unsigned moverAfter(const Material& material, const Conversion& conversion) {
    return conversion.captured != 0 ? material.side[conversion.captured]
                                    : material.side[conversion.promoted] ^ 1U;
}

ConversionReader::ConversionReader(const Material& material, TableStore& store) {
    for (const Conversion& conversion : conversionsOf(material)) {
        readers[placeOf(conversion)] =
            TableReader(convert(material, conversion), moverAfter(material, conversion), store);
    }
}

}  // namespace brivok::tables
