#pragma once

#include <span>
#include <string>

namespace brivok {

/// The type of an option, which decides how an interface presents it.
enum class OptionKind { Spin, Check, String, Button };

/// A setting as an interface option.
struct Option {
    const char* name = nullptr;  ///< as listed; nullptr if the setting is not an option
    OptionKind kind = OptionKind::Spin;
    int lower = 0;                       ///< of a spin
    int upper = 0;                       ///< of a spin
    const char* acceptedName = nullptr;  ///< name in "setoption" if it differs from `name`

    [[nodiscard]] constexpr const char* nameToSet() const {
        return acceptedName != nullptr ? acceptedName : name;
    }
};

/// How a setting is shown and set, including the refresh of what depends on it. The file and an
/// interface have separate rules: the file's values are trusted, an option's are checked against
/// its range. A value out of range leaves the setting as it is.
struct Rule {
    /// The current value, as an option shows it.
    std::string (*show)() = nullptr;
    /// Sets a one-word value from the file.
    void (*fromFile)(const std::string& value) = nullptr;
    /// Sets a value from an interface: for a string the rest of the line, for a spin or check one
    /// word, for a button empty.
    void (*fromOption)(const Option& option, const std::string& value) = nullptr;
};

/// A setting with its key in "brivok.ini" and its option.
struct Setting {
    Rule rule;
    const char* key = nullptr;  ///< with its colon; nullptr if the file cannot set it
    Option option{};            ///< without a name if the setting is not an option
};

/// All settings. Options are in the order in which they are listed; other settings are next to
/// related ones.
[[nodiscard]] std::span<const Setting> settingsTable();

}  // namespace brivok
