#include "shell/uci_options.h"

#include <cstdint>
#include <string_view>

#include "board/board.h"
#include "board/piece_values.h"
#include "egtb/registration.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/transposition_table.h"
#include "search/searcher.h"
#include "shell/base/console.h"
#include "shell/base/settings.h"
#include "shell/base/words.h"

namespace brivok {

namespace {

using Words = std::vector<std::string>;

/// Position of an option's value in the words of its line.
constexpr std::size_t ValueWord = 4;

enum class Kind { Spin, Check, String, Button };

/// One option. `set` gets all words of the line; the value is there, and no more is known of it.
struct Option {
    const char* name;
    Kind kind;
    int lower;
    int upper;
    std::string (*get)();
    void (*set)(const Option&, const Words&);
    const char* acceptedName = nullptr;  ///< what setoption compares, if not the name listed
};

const std::string& valueOf(const Words& words) { return words[ValueWord]; }

bool inRange(const Option& option, std::int64_t value) {
    return value >= option.lower && value <= option.upper;
}

// Check options: only the exact word "true" is true.
template <bool Settings::*Field>
constexpr Option check(const char* name) {
    return {name,
            Kind::Check,
            0,
            0,
            [] { return std::string(settings.*Field ? "true" : "false"); },
            [](const Option&, const Words& words) { settings.*Field = valueOf(words) == "true"; }};
}

/// Spin values are cut to 16 bits before they are held against the range.
std::int16_t spinValue(const Words& words) {
    return static_cast<std::int16_t>(parseInteger(valueOf(words)));
}

template <std::int16_t Settings::*Field>
constexpr Option plainSpin(const char* name, int lower, int upper) {
    return {name,
            Kind::Spin,
            lower,
            upper,
            [] { return std::to_string(settings.*Field); },
            [](const Option& option, const Words& words) {
                if (inRange(option, spinValue(words))) settings.*Field = spinValue(words);
            }};
}

/// A depth, told in percent of a ply and held in units.
template <std::int16_t Settings::*Field>
constexpr Option percentSpin(const char* name, int upper, const char* acceptedName = nullptr) {
    return {name,
            Kind::Spin,
            0,
            upper,
            [] { return std::to_string(percentFromUnits(settings.*Field)); },
            [](const Option& option, const Words& words) {
                if (!inRange(option, spinValue(words))) return;
                settings.*Field = unitsFromPercent(spinValue(words));
            },
            acceptedName};
}

/// A piece value takes effect at once, on the board and in all that was derived from it.
template <std::int16_t Settings::*Field>
constexpr Option pieceSpin(const char* name) {
    constexpr int Limit = 2000;
    return {name,
            Kind::Spin,
            -Limit,
            Limit,
            [] { return std::to_string(settings.*Field); },
            [](const Option& option, const Words& words) {
                if (!inRange(option, spinValue(words))) return;
                settings.*Field = spinValue(words);
                RefreshPieceValues();
                theBoard.recomputeDerived();
                evalHashTable.Clear();
            }};
}

/// The size of a table, which is made anew whether or not the value was taken.
template <std::uint32_t Settings::*Field, void (*MakeAnew)()>
constexpr Option sizeSpin(const char* name, int upper) {
    return {name,
            Kind::Spin,
            1,
            upper,
            [] { return std::to_string(settings.*Field); },
            [](const Option& option, const Words& words) {
                const std::int64_t value = parseInteger(valueOf(words));
                if (inRange(option, value)) settings.*Field = static_cast<std::uint32_t>(value);
                MakeAnew();
            }};
}

void remakeHash() { transpositionTable.resize(); }
void remakePawnHash() { pawnHashTable.Allocate(); }
void remakeEvaluationHash() { evalHashTable.Allocate(); }

void setNalimovCache(const Option& option, const Words& words) {
    const std::int64_t value = parseInteger(valueOf(words));
    if (inRange(option, value)) {
        settings.EGTBCacheBytes = static_cast<std::uint32_t>(value) * Megabyte;
    }
    SetCacheSize(settings.EGTBCacheBytes);
}

/// All words from the value on, in lower case, joined by one space.
void setNalimovPath(const Option&, const Words& words) {
    std::string path;
    for (std::size_t i = ValueWord; i < words.size(); ++i) {
        if (i > ValueWord) path += " ";
        path += words[i];
    }
    path = lowerCase(path);
    if (path == settings.egtbDir) return;
    settings.egtbDir = path;
    InitTablebases(settings.egtbDir, settings.EGTBCacheBytes);
}

/// Opens or closes the log, unless it is so already.
void setCreateLog(const Option&, const Words& words) {
    Logger& logger = theApplication->logger;
    const bool wanted = valueOf(words) == "true";
    if (wanted == logger.enabled) return;
    settings.createLog = wanted;
    if (wanted) {
        logger.OpenLog();
    } else {
        logger.CloseLog();
    }
}

void ignore(const Option&, const Words&) {}

std::string noValue() { return ""; }

/// In the order of the list.
constexpr Option Options[] = {
    sizeSpin<&Settings::hashMB, remakeHash>("Hash", 1024),
    {"Clear Hash", Kind::Button, 0, 0, noValue, ignore},
    check<&Settings::bookEnabled>("OwnBook"),
    {"NalimovPath", Kind::String, 0, 0, [] { return settings.egtbDir; }, setNalimovPath},
    {"NalimovCache", Kind::Spin, 1, 64,
     [] { return std::to_string(settings.EGTBCacheBytes / Megabyte); }, setNalimovCache},
    {"Ponder", Kind::Check, 0, 0,
     [] { return std::string(theSearcher.ponderEnabled ? "true" : "false"); },
     [](const Option&, const Words& words) {
         theSearcher.ponderEnabled = valueOf(words) == "true";
     }},
    {"PlayFRC", Kind::Check, 0, 0,
     [] { return std::string(settings.variant == Variant::Fischerandom ? "true" : "false"); },
     [](const Option&, const Words& words) {
         settings.variant = valueOf(words) == "true" ? Variant::Fischerandom : Variant::Normal;
     }},
    check<&Settings::lazyEvalEnabled>("UseLazyEval"),
    check<&Settings::useNullMove>("UseNullMove"),
    sizeSpin<&Settings::EHashMB, remakeEvaluationHash>("EvaluationHash", 512),
    sizeSpin<&Settings::PHashMB, remakePawnHash>("PawnHash", 64),
    pieceSpin<&Settings::QueenValue>("QueenValue"),
    pieceSpin<&Settings::RookValue>("RookValue"),
    pieceSpin<&Settings::BishopValue>("BishopValue"),
    pieceSpin<&Settings::KnightValue>("KnightValue"),
    pieceSpin<&Settings::PawnValue>("PawnValue"),
    percentSpin<&Settings::nullMoveMin>("NullMoveMin", 600),
    percentSpin<&Settings::nullMoveMax>("NullMoveMax", 600),
    plainSpin<&Settings::aspirationWindow>("AspirationWindow", 0, 9000),
    percentSpin<&Settings::checkExtension>("CheckExtension", 500),
    percentSpin<&Settings::recaptureExtension>("RecaptureExtension", 500),
    percentSpin<&Settings::oneReplyExtension>("OneReplyCheckExtension", 500),
    percentSpin<&Settings::mateThreatExtension>("MateTheatExtension", 500, "MateThreatExtension"),
    percentSpin<&Settings::pawnPushExtension>("PawnPushExtension", 500),
    {"BookFile", Kind::String, 0, 0, [] { return settings.bookFileName; }, ignore},
    {"CreateLog", Kind::Check, 0, 0,
     [] { return std::string(theApplication->logger.enabled ? "true" : "false"); }, setCreateLog},
};

std::string optionLine(const Option& option) {
    std::string line = std::string("option name ") + option.name + " type ";
    switch (option.kind) {
        case Kind::Button: return line + "button\n";
        case Kind::Check: return line + "check default " + option.get() + "\n";
        case Kind::String: return line + "string default " + option.get() + "\n";
        case Kind::Spin: break;
    }
    return line + "spin default " + option.get() + " min " + std::to_string(option.lower) +
           " max " + std::to_string(option.upper) + "\n";
}

}  // namespace

void listOptions(Application& app) {
    for (const Option& option : Options) Print(app, "%s", optionLine(option).c_str());
}

void setOption(const Words& words) {
    if (words.size() < 3 || words[1] != "name") return;
    const std::string& name = words[2];
    // The one name of two words
    if (name == "Clear" && words.size() > 3 && words[3] == "Hash") {
        transpositionTable.clear();
        evalHashTable.Clear();
        return;
    }
    if (words.size() <= ValueWord || words[ValueWord - 1] != "value") return;
    for (const Option& option : Options) {
        const char* accepted = option.acceptedName != nullptr ? option.acceptedName : option.name;
        if (name != accepted) continue;
        option.set(option, words);
        return;
    }
}

}  // namespace brivok
