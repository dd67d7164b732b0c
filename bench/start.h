#pragma once

#include <optional>
#include <string_view>

#include "shell/base/settings.h"

namespace brivok {

/// Makes the engine usable for a program that does not run a protocol: the tables that never
/// change, and an application to print by.
void startEngine();

/// By the value of the variant.
inline constexpr std::string_view VariantNames[] = {"normal", "fischerandom", "nocastle"};

/// The word for a variant on a command line.
[[nodiscard]] constexpr std::string_view nameOf(Variant variant) {
    return VariantNames[static_cast<unsigned>(variant)];
}

/// The variant of a word; none for another word.
[[nodiscard]] std::optional<Variant> variantNamed(std::string_view name);

}  // namespace brivok
