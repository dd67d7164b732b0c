#include "shell/modern/modern_options.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "egtb/registration.h"
#include "egtb/tablebase_probe.h"
#include "shell/base/console.h"
#include "shell/base/settings.h"
#include "shell/base/version.h"
#include "shell/base/words.h"
#include "shell/modern/memory_spread.h"
#include "shell/uci_options.h"

namespace brivok {

namespace {

// --- The rules ---------------------------------------------------------------------------------

std::string switchText(bool on) { return on ? "true" : "false"; }

/// The plain table's rule.
constexpr Rule AsPlain{};

template <int ModernSettings::*Field>
constexpr Rule Number{
    .show = [] { return std::to_string(modernSettings.*Field); },
    .fromOption =
        [](const Option&, const std::string& value) {
            modernSettings.*Field = static_cast<int>(parseInteger(value));
        },
};

template <bool ModernSettings::*Field>
constexpr Rule Switch{
    .show = [] { return switchText(modernSettings.*Field); },
    .fromOption = [](const Option&,
                     const std::string& value) { modernSettings.*Field = value == "true"; },
};

constexpr Rule EndgameFolders{
    .show = [] { return settings.egtbDir; },
    .fromOption =
        [](const Option&, const std::string& value) {
            if (value == settings.egtbDir) return;
            settings.egtbDir = value;
            InitTablebases(settings.egtbDir, settings.EGTBCacheBytes);
        },
};

constexpr Rule BookFile{
    .show = [] { return settings.bookFileName; },
    .fromOption = [](const Option&, const std::string& value) { settings.bookFileName = value; },
};

/// Switches between Fischer-random and normal chess; without castling there is nothing to switch.
constexpr Rule Chess960{
    .show = [] { return switchText(modernSettings.castlingStyle == CastlingStyle::KingOntoRook); },
    .fromOption =
        [](const Option&, const std::string& value) {
            const bool on = value == "true";
            modernSettings.castlingStyle =
                on ? CastlingStyle::KingOntoRook : CastlingStyle::Letters;
            if (on) {
                settings.variant = Variant::Fischerandom;
            } else if (settings.variant == Variant::Fischerandom) {
                settings.variant = Variant::Normal;
            }
        },
};

/// Interfaces show it; setting it changes nothing.
constexpr Rule About{
    .show = [] { return std::string(EngineName).append(", a classical chess engine"); },
    .fromOption = [](const Option&, const std::string&) {},
};

// --- The table ---------------------------------------------------------------------------------

constexpr char MainHash[] = "Hash";
constexpr char EvalHash[] = "EvaluationHash";
constexpr char PawnHash[] = "PawnHash";
constexpr bool IsMemory = true;

constexpr int MostLines = 64;
constexpr int LongestOverhead = 5000;  // milliseconds

using M = ModernSettings;
using enum OptionKind;
using enum WinBoardForm;

// clang-format off
/// Options of the plain table that are treated otherwise here.
constexpr ModernOption Changed[] = {
    {AsPlain,                     {MainHash, Spin}, ByKind, IsMemory},
    {AsPlain,                     {EvalHash, Spin}, ByKind, IsMemory},
    {AsPlain,                     {PawnHash, Spin}, ByKind, IsMemory},
    {AsPlain,                     {"NalimovCache", Spin}, ByKind, IsMemory},
    {EndgameFolders,              {"NalimovPath", String}, Path},
    {AsPlain,                     {"Ponder", Check}, Hidden},
    {AsPlain,                     {"PlayFRC", Check}, Hidden},
    {BookFile,                    {"BookFile", String}, File},
};

constexpr ModernOption Further[] = {
    {Number<&M::lines>,           {"MultiPV", Spin, 1, MostLines}},
    {Chess960,                    {"UCI_Chess960", Check}, Hidden},
    {Number<&M::moveOverhead>,    {"Move Overhead", Spin, 0, LongestOverhead}},
    {Switch<&M::limitStrength>,   {"UCI_LimitStrength", Check}, Hidden},
    {Number<&M::elo>,             {"UCI_Elo", Spin, LowestElo, HighestElo}, Hidden},
    {About,                       {"UCI_EngineAbout", String}, Hidden},
};
// clang-format on

std::vector<ModernOption> joinedTable() {
    std::vector<ModernOption> table;
    for (const auto& [rule, key, option] : settingsTable()) {
        if (option.name == nullptr) continue;
        ModernOption row{rule, option};
        for (const ModernOption& changed : Changed) {
            if (std::string_view(changed.option.name) != option.name) continue;
            if (changed.rule.fromOption != nullptr) row.rule = changed.rule;
            row.form = changed.form;
            row.isMemory = changed.isMemory;
        }
        table.push_back(row);
    }
    table.insert(table.end(), std::begin(Further), std::end(Further));
    return table;
}

// --- Names and values --------------------------------------------------------------------------

/// Words in lower case, with one blank between them.
std::string plainName(std::string_view name) {
    std::string joined;
    for (const std::string& word : SplitWords(name)) {
        if (!joined.empty() && !word.empty()) joined += ' ';
        joined += lowerCase(word);
    }
    return joined;
}

const ModernOption* findOption(std::string_view name) {
    const std::string wanted = plainName(name);
    for (const ModernOption& row : modernOptions()) {
        for (const char* known : {row.option.name, row.option.nameToSet()}) {
            if (wanted == lowerCase(known)) return &row;
        }
    }
    return nullptr;
}

bool isWholeNumber(std::string_view text) {
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [](unsigned char c) { return std::isdigit(c) != 0; });
}

/// Brings the value into the form that rules expect. Returns what is wrong with it, or nothing.
std::string adapt(std::string& value, const ModernOption& row) {
    const Option& option = row.option;
    switch (option.kind) {
        case OptionKind::Button: return value.empty() ? "" : "a button takes no value";
        case OptionKind::String:
            if (value == "<empty>") value.clear();
            return "";
        default:
            if (value.empty()) return "a value is missing";
    }
    if (option.kind == OptionKind::Check) {
        const std::string word = lowerCase(value);
        const bool on = word == "true" || word == "1";
        if (!on && word != "false" && word != "0") return value + " is not true or false";
        value = switchText(on);
        return "";
    }
    if (!isWholeNumber(value)) return value + " is not a whole number";
    const std::int64_t number = parseInteger(value);
    if (number < option.lower || number > option.upper) {
        return value + " is not between " + std::to_string(option.lower) + " and " +
               std::to_string(option.upper);
    }
    const bool isGranted = !row.isMemory || isMemoryGranted(static_cast<std::uint32_t>(number));
    return isGranted ? "" : "there is no room for " + value + " MB";
}

// --- WinBoard ----------------------------------------------------------------------------------

/// A quotation mark would end the feature.
std::string quotable(std::string text) {
    std::erase(text, '"');
    return text;
}

/// Type and value.
std::string featureText(const ModernOption& row) {
    const Option& option = row.option;
    if (option.kind == Button) return "-button";
    const std::string value = row.rule.show();
    if (option.kind == Check) return std::string("-check ") + (value == "true" ? "1" : "0");
    if (option.kind == Spin) {
        return "-spin " + value + " " + std::to_string(option.lower) + " " +
               std::to_string(option.upper);
    }
    const char* type = row.form == File ? "-file " : row.form == Path ? "-path " : "-string ";
    return type + quotable(value);
}

// --- Memory ------------------------------------------------------------------------------------

std::uint32_t mostOf(const char* name) {
    return static_cast<std::uint32_t>(findOption(name)->option.upper);
}

void resizeTo(const char* name, std::uint32_t megabytes) {
    const ModernOption& row = *findOption(name);
    const std::string size = std::to_string(megabytes);
    if (row.rule.show() != size) row.rule.fromOption(row.option, size);
}

}  // namespace

std::span<const ModernOption> modernOptions() {
    static const std::vector<ModernOption> table = joinedTable();
    return table;
}

void listModernOptions(Application& app) {
    for (const ModernOption& row : modernOptions()) {
        Print(app, "%s", optionLine(row.option, row.rule.show()).c_str());
    }
}

std::string optionFeatures() {
    std::string features;
    for (const ModernOption& row : modernOptions()) {
        if (row.form == Hidden) continue;
        features += std::string(" option=\"") + row.option.name + " " + featureText(row) + "\"";
    }
    return features;
}

std::string setModernOption(std::string_view name, const std::string& value) {
    const ModernOption* row = findOption(name);
    if (row == nullptr) return "no option named " + std::string(name);
    std::string adapted = value;
    const std::string fault = adapt(adapted, *row);
    if (!fault.empty()) return std::string("option ") + row->option.name + ": " + fault;
    row->rule.fromOption(row->option, adapted);
    return "";
}

void setMemory(std::uint32_t megabytes) {
    while (megabytes > 0 && !isMemoryGranted(megabytes)) megabytes /= 2;
    const std::uint32_t cache = tablebases.tbMaxMen != 0 ? settings.EGTBCacheBytes / Megabyte : 0;
    const HashSizes sizes = spreadMemory(megabytes - std::min(megabytes, cache),
                                         {mostOf(MainHash), mostOf(EvalHash), mostOf(PawnHash)});
    resizeTo(MainHash, sizes.main);
    resizeTo(EvalHash, sizes.evaluations);
    resizeTo(PawnHash, sizes.pawns);
}

}  // namespace brivok
