#include "start.h"

#include <memory>

#include "search/searcher.h"
#include "shell/base/application.h"

namespace brivok {

void startEngine() {
    setUpEngine();
    theApplication = std::make_unique<Application>();
}

std::optional<Variant> variantNamed(std::string_view name) {
    for (const Variant variant : {Variant::Normal, Variant::Fischerandom, Variant::NoCastle}) {
        if (nameOf(variant) == name) return variant;
    }
    return std::nullopt;
}

}  // namespace brivok
