#pragma once

#include <span>
#include <string>

namespace brivok {

/// What an interface shows of a setting, and thereby how it is chosen.
enum class OptionKind { Spin, Check, String, Button };

/// A setting as the option of an interface.
struct Option {
    const char* name = nullptr;  ///< as it is listed; nullptr for a setting that is no option
    OptionKind kind = OptionKind::Spin;  ///< what it takes
    int lower = 0;                       ///< least value of a spin
    int upper = 0;                       ///< greatest value of a spin
    const char* acceptedName = nullptr;  ///< the name that sets it, if not the one listed

    /// The name that sets it.
    [[nodiscard]] constexpr const char* nameToSet() const {
        return acceptedName != nullptr ? acceptedName : name;
    }
};

/// How a setting is shown and taken; what hangs on its value is made anew by the same call. The
/// file and an interface have rules of their own: the file is believed, and an option has a range.
/// A value that does not fit changes nothing.
struct Rule {
    /// The present value as an option shows it.
    std::string (*show)() = nullptr;
    /// Takes a value of the file, one word.
    void (*fromFile)(const std::string& value) = nullptr;
    /// Takes a value of an interface: the whole rest of the line for a string, one word for a spin
    /// or a check, empty for a button.
    void (*fromOption)(const Option& option, const std::string& value) = nullptr;
};

/// A row of the table: a setting, its key in "brivok.ini" and its option.
struct Setting {
    Rule rule;                  ///< how it is shown and taken
    const char* key = nullptr;  ///< with its colon; nullptr for a setting that the file has not
    Option option{};            ///< without a name for a setting that is no option
};

/// All settings. Those that are options stand in the order in which they are listed, the others
/// beside their like.
[[nodiscard]] std::span<const Setting> settingsTable();

}  // namespace brivok
