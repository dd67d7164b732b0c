#include "shell/uci_options.h"

#include <cstddef>

#include "shell/base/console.h"

namespace brivok {

namespace {

using Words = std::vector<std::string>;

/// Index of an option's value among the words of its line.
constexpr std::size_t ValueWord = 4;

/// A string is the rest of the line, its words joined by single spaces; other values are one word.
std::string valueOf(const Words& words, OptionKind kind) {
    std::string value = words[ValueWord];
    if (kind != OptionKind::String) return value;
    for (std::size_t i = ValueWord + 1; i < words.size(); ++i) value += " " + words[i];
    return value;
}

}  // namespace

std::string optionLine(const Option& option, const std::string& value) {
    const std::string line = std::string("option name ") + option.name + " type ";
    switch (option.kind) {
        case OptionKind::Button: return line + "button\n";
        case OptionKind::Check: return line + "check default " + value + "\n";
        case OptionKind::String: return line + "string default " + value + "\n";
        case OptionKind::Spin: break;
    }
    return line + "spin default " + value + " min " + std::to_string(option.lower) + " max " +
           std::to_string(option.upper) + "\n";
}

void listOptions(Application& app) {
    for (const auto& [rule, key, option] : settingsTable()) {
        if (option.name == nullptr) continue;
        Print(app, "%s", optionLine(option, rule.show()).c_str());
    }
}

void setOption(const Words& words) {
    if (words.size() < ValueWord || words[1] != "name") return;
    // A button has a two-word name and no value.
    const bool hasValue = words[ValueWord - 1] == "value";
    if (hasValue && words.size() == ValueWord) return;
    const std::string name = hasValue ? words[2] : words[2] + " " + words[3];
    for (const auto& [rule, key, option] : settingsTable()) {
        if (option.name == nullptr || name != option.nameToSet()) continue;
        return rule.fromOption(option, hasValue ? valueOf(words, option.kind) : "");
    }
}

}  // namespace brivok
