#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "shell/base/application.h"
#include "shell/modern/interface_moves.h"
#include "shell/modern/strength_limit.h"
#include "shell/settings_table.h"

namespace brivok {

/// Settings that only modern interfaces know.
struct ModernSettings {
    CastlingStyle castlingStyle = CastlingStyle::Letters;  ///< UCI_Chess960 chooses
    int lines = 1;                                         ///< MultiPV
    int moveOverhead = 10;       ///< milliseconds to keep in reserve for each move
    bool limitStrength = false;  ///< whether `elo` counts
    int elo = HighestElo;        ///< see nodesOfElo()

    bool operator==(const ModernSettings&) const = default;
};

inline ModernSettings modernSettings;

/// How WinBoard shows an option. Hidden ones have a command of that protocol in their place, or a
/// meaning under UCI alone.
enum class WinBoardForm { ByKind, File, Path, Hidden };

/// An option of the modern handlers. `rule.fromOption` gets only values that suit the option: a
/// spin within its range, "true" or "false" for a check.
struct ModernOption {
    Rule rule;
    Option option;
    WinBoardForm form = WinBoardForm::ByKind;
    bool isMemory = false;  ///< megabytes, which the system may refuse
};

/// The options of the plain handlers in their order, some with other rules, then further ones.
[[nodiscard]] std::span<const ModernOption> modernOptions();

/// Prints the option lines for UCI, with the current values as defaults.
void listModernOptions(Application& app);

/// The options as "option" features of WinBoard, each preceded by a blank:
/// ` option="Hash -spin 1 1 1024" option="Clear Hash -button"` and so on.
[[nodiscard]] std::string optionFeatures();

/// Sets an option, for either protocol. The name may be in any case and have blanks inside. A spin
/// is a whole number in its range, a check "true", "false", "1" or "0", a button has an empty
/// value; a string is taken as it is, blanks included, and "<empty>" is an empty one. Returns an
/// empty text, or why the option keeps its value, such as "option Hash: 5000 is not between 1 and
/// 1024".
[[nodiscard]] std::string setModernOption(std::string_view name, const std::string& value);

/// Spreads the megabytes that WinBoard's "memory" allows over the hash tables: see spreadMemory().
/// If there are endgame tables, their cache keeps its size and counts. Tables whose sizes change
/// are replaced by empty ones.
void setMemory(std::uint32_t megabytes);

}  // namespace brivok
