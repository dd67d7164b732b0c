#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "shell/base/application.h"
#include "shell/modern/interface_moves.h"

namespace brivok {

/// Settings that only modern interfaces know.
struct ModernSettings {
    CastlingStyle castlingStyle = CastlingStyle::Letters;  ///< UCI_Chess960 chooses
    int lines = 1;                                         ///< MultiPV
    int moveOverhead = 10;  ///< milliseconds to keep in reserve for each move
    bool limitStrength = false;
    int elo = 2400;  ///< with limitStrength

    bool operator==(const ModernSettings&) const = default;
};

inline ModernSettings modernSettings;

/// Lists all options, those of the plain handler and further ones, for UCI.
void listModernOptions(Application& app);

/// The options as "option" features of WinBoard, each preceded by a blank.
[[nodiscard]] std::string optionFeatures();

/// Sets an option from either protocol; names compare without regard to case. Returns an empty
/// text, or why the option keeps its value.
[[nodiscard]] std::string setModernOption(std::string_view name, const std::string& value);

/// Spreads the megabytes that WinBoard's "memory" allows over the hash tables.
void setMemory(std::uint32_t megabytes);

/// Nodes for a move at this rating.
[[nodiscard]] std::uint32_t nodesOfElo(int elo);

}  // namespace brivok
