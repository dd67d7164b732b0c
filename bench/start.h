#pragma once

#include <optional>
#include <string_view>

#include "shell/base/settings.h"

namespace brivok {

/// Initialises the engine for a program that runs no protocol: constant tables, and an application
/// for output.
void startEngine();

/// Indexed by Variant.
inline constexpr std::string_view VariantNames[] = {"normal", "fischerandom", "nocastle"};

/// The variant's name on the command line.
[[nodiscard]] constexpr std::string_view nameOf(Variant variant) {
    return VariantNames[static_cast<unsigned>(variant)];
}

/// nullopt if there is no such variant.
[[nodiscard]] std::optional<Variant> variantNamed(std::string_view name);

}  // namespace brivok
