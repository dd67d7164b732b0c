#include "start.h"

#include <memory>

#include "board/piece_values.h"
#include "board/static_tables.h"
#include "shell/base/application.h"

namespace brivok {

void startEngine() {
    buildStaticTables();
    RefreshPieceValues();
    theApplication = std::make_unique<Application>();
}

std::optional<Variant> variantNamed(std::string_view name) {
    for (const Variant variant : {Variant::Normal, Variant::Fischerandom, Variant::NoCastle}) {
        if (nameOf(variant) == name) return variant;
    }
    return std::nullopt;
}

}  // namespace brivok
