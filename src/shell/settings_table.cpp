#include "shell/settings_table.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "board/board.h"
#include "board/piece_values.h"
#include "egtb/registration.h"
#include "hash/eval_hash.h"
#include "hash/pawn_hash.h"
#include "hash/transposition_table.h"
#include "search/searcher.h"
#include "shell/base/application.h"
#include "shell/base/settings.h"
#include "shell/base/words.h"

namespace brivok {

namespace {

// --- The rules ---------------------------------------------------------------------------------

constexpr bool inRange(const Option& option, std::int64_t value) {
    return value >= option.lower && value <= option.upper;
}

/// A spin value stored in 16 bits: truncated before it is compared with the range.
std::int16_t narrowNumber(const std::string& value) {
    return static_cast<std::int16_t>(parseInteger(value));
}

std::string switchText(bool on) { return on ? "true" : "false"; }

/// "true" means on; in the file, letters may be of either case.
template <bool Settings::*Field>
constexpr Rule Switch{
    .show = [] { return switchText(settings.*Field); },
    .fromFile = [](const std::string& value) { settings.*Field = lowerCase(value) == "true"; },
    .fromOption = [](const Option&,
                     const std::string& value) { settings.*Field = value == "true"; },
};

template <auto Field>
std::string numberText() {
    return std::to_string(settings.*Field);
}

/// A number from the file is truncated to the width of the field.
template <auto Field>
void readNumber(const std::string& value) {
    auto& setting = settings.*Field;
    setting = static_cast<std::remove_reference_t<decltype(setting)>>(parseInteger(value));
}

template <auto Field>
constexpr Rule Number{
    .show = numberText<Field>,
    .fromFile = readNumber<Field>,
    .fromOption =
        [](const Option& option, const std::string& value) {
            if (inRange(option, narrowNumber(value))) settings.*Field = narrowNumber(value);
        },
};

/// Shown in hundredths of a ply, stored in units.
template <std::int16_t Settings::*Field>
constexpr Rule Depth{
    .show = [] { return std::to_string(percentFromUnits(settings.*Field)); },
    .fromFile =
        [](const std::string& value) { settings.*Field = unitsFromPercent(parseInteger(value)); },
    .fromOption =
        [](const Option& option, const std::string& value) {
            if (!inRange(option, narrowNumber(value))) return;
            settings.*Field = unitsFromPercent(narrowNumber(value));
        },
};

/// The option updates the board and all derived values at once. The file need not: a new game is
/// set up after it has been read.
template <std::int16_t Settings::*Field>
constexpr Rule PieceWorth{
    .show = numberText<Field>,
    .fromFile =
        [](const std::string& value) {
            readNumber<Field>(value);
            RefreshPieceValues();
        },
    .fromOption =
        [](const Option& option, const std::string& value) {
            if (!inRange(option, narrowNumber(value))) return;
            settings.*Field = narrowNumber(value);
            RefreshPieceValues();
            theBoard.recomputeDerived();
            evalHashTable.Clear();
        },
};

/// Megabytes of a hash table, never 0. The option reallocates the table even if the value was
/// rejected. The file need not: all tables are allocated after it has been read.
template <std::uint32_t Settings::*Field, void (*MakeAnew)()>
constexpr Rule HashSize{
    .show = numberText<Field>,
    .fromFile =
        [](const std::string& value) {
            const auto megabytes = static_cast<std::uint32_t>(parseInteger(value));
            if (megabytes != 0) settings.*Field = megabytes;
        },
    .fromOption =
        [](const Option& option, const std::string& value) {
            const std::int64_t megabytes = parseInteger(value);
            if (inRange(option, megabytes)) {
                settings.*Field = static_cast<std::uint32_t>(megabytes);
            }
            MakeAnew();
        },
};

void remakeMain() { transpositionTable.resize(); }
void remakePawns() { pawnHashTable.Allocate(); }
void remakeEval() { evalHashTable.Allocate(); }

/// Shown in megabytes, stored in bytes. The option empties the cache even if the value was
/// rejected.
constexpr Rule EndgameCache{
    .show = [] { return std::to_string(settings.EGTBCacheBytes / Megabyte); },
    .fromFile =
        [](const std::string& value) {
            settings.EGTBCacheBytes = static_cast<std::uint32_t>(parseInteger(value)) * Megabyte;
        },
    .fromOption =
        [](const Option& option, const std::string& value) {
            const std::int64_t megabytes = parseInteger(value);
            if (inRange(option, megabytes)) {
                settings.EGTBCacheBytes = static_cast<std::uint32_t>(megabytes) * Megabyte;
            }
            SetCacheSize(settings.EGTBCacheBytes);
        },
};

/// The option's path is converted to lower case; tables are looked for only if the path changes.
constexpr Rule EndgameFolders{
    .show = [] { return settings.egtbDir; },
    .fromFile = [](const std::string& value) { settings.egtbDir = value; },
    .fromOption =
        [](const Option&, const std::string& value) {
            const std::string path = lowerCase(value);
            if (path == settings.egtbDir) return;
            settings.egtbDir = path;
            InitTablebases(settings.egtbDir, settings.EGTBCacheBytes);
        },
};

/// Only the file can choose the book.
constexpr Rule BookFile{
    .show = [] { return settings.bookFileName; },
    .fromFile = [](const std::string& value) { settings.bookFileName = lowerCase(value); },
    .fromOption = [](const Option&, const std::string&) {},
};

/// The file has its own names for the variants; the option switches between two of them.
constexpr Rule GameRules{
    .show = [] { return switchText(settings.variant == Variant::Fischerandom); },
    .fromFile =
        [](const std::string& value) {
            const std::string name = lowerCase(value);
            settings.variant = name == "frc"        ? Variant::Fischerandom
                               : name == "nocastle" ? Variant::NoCastle
                                                    : Variant::Normal;
        },
    .fromOption =
        [](const Option&, const std::string& value) {
            settings.variant = value == "true" ? Variant::Fischerandom : Variant::Normal;
        },
};

/// The file requests a log, which is opened later; the option opens or closes it if necessary.
constexpr Rule Log{
    .show = [] { return switchText(theApplication->logger.enabled); },
    .fromFile = Switch<&Settings::createLog>.fromFile,
    .fromOption =
        [](const Option&, const std::string& value) {
            Logger& logger = theApplication->logger;
            const bool wanted = value == "true";
            if (wanted == logger.enabled) return;
            settings.createLog = wanted;
            if (wanted) {
                logger.OpenLog();
            } else {
                logger.CloseLog();
            }
        },
};

constexpr Rule LogFolder{
    .fromFile = [](const std::string& value) { settings.logFolder = value; },
};

constexpr Rule Pondering{
    .show = [] { return switchText(theSearcher.ponderEnabled); },
    .fromOption = [](const Option&,
                     const std::string& value) { theSearcher.ponderEnabled = value == "true"; },
};

constexpr Rule ClearHash{
    .show = [] { return std::string(); },
    .fromOption =
        [](const Option&, const std::string&) {
            transpositionTable.clear();
            evalHashTable.Clear();
        },
};

// --- The table ---------------------------------------------------------------------------------

constexpr const char* NoKey = nullptr;

constexpr Option button(const char* name) { return {name, OptionKind::Button}; }
constexpr Option check(const char* name) { return {name, OptionKind::Check}; }
constexpr Option text(const char* name) { return {name, OptionKind::String}; }
constexpr Option spin(const char* name, int lower, int upper, const char* acceptedName = nullptr) {
    return {name, OptionKind::Spin, lower, upper, acceptedName};
}

using S = Settings;

// clang-format off
constexpr Setting Table[] = {
    {Switch<&S::modernInterface>,        "ModernInterface:"},

    {HashSize<&S::hashMB, remakeMain>,   "HashMB:",                  spin("Hash", 1, 1024)},
    {ClearHash,                          NoKey,                      button("Clear Hash")},
    {Switch<&S::bookEnabled>,            "OpeningsBook:",            check("OwnBook")},
    {EndgameFolders,                     "EGTBDir:",                 text("NalimovPath")},
    {EndgameCache,                       "EGTBCacheMB:",             spin("NalimovCache", 1, 64)},

    {Pondering,                          NoKey,                      check("Ponder")},
    {GameRules,                          "Variant:",                 check("PlayFRC")},
    {Switch<&S::resignEnabled>,          "Resign:"},
    {Number<&S::resignValue>,            "ResignValue:"},
    {Switch<&S::extraInfo>,              "ExtraInfo:"},

    {Switch<&S::lazyEvalEnabled>,        "LazyEval:",                check("UseLazyEval")},
    {Switch<&S::useNullMove>,            "NullMove:",                check("UseNullMove")},
    {Switch<&S::useFutility>,            "Futility:"},
    {Switch<&S::useDeltaPruning>,        "DeltaPrune:"},
    {Switch<&S::useIid>,                 "IID:"},

    {HashSize<&S::EHashMB, remakeEval>,  "EHashMB:",                 spin("EvaluationHash", 1, 512)},
    {HashSize<&S::PHashMB, remakePawns>, "PHashMB:",                 spin("PawnHash", 1, 64)},

    {PieceWorth<&S::QueenValue>,         "QueenValue:",              spin("QueenValue", -2000, 2000)},
    {PieceWorth<&S::RookValue>,          "RookValue:",               spin("RookValue", -2000, 2000)},
    {PieceWorth<&S::BishopValue>,        "BishopValue:",             spin("BishopValue", -2000, 2000)},
    {PieceWorth<&S::KnightValue>,        "KnightValue:",             spin("KnightValue", -2000, 2000)},
    {PieceWorth<&S::PawnValue>,          "PawnValue:",               spin("PawnValue", -2000, 2000)},

    {Depth<&S::nullMoveMin>,             "NullMoveMin:",             spin("NullMoveMin", 0, 600)},
    {Depth<&S::nullMoveMax>,             "NullMoveMax:",             spin("NullMoveMax", 0, 600)},
    {Number<&S::aspirationWindow>,       "AspirationWindow:",        spin("AspirationWindow", 0, 9000)},
    {Depth<&S::checkExtension>,          "CheckExtension:",          spin("CheckExtension", 0, 500)},
    {Depth<&S::recaptureExtension>,      "RecapExtension:",          spin("RecaptureExtension", 0, 500)},
    {Depth<&S::oneReplyExtension>,       "SingleRepCheckExtension:", spin("OneReplyCheckExtension", 0, 500)},
    {Depth<&S::mateThreatExtension>,     "MateThreatExtension:",     spin("MateTheatExtension", 0, 500,
                                                                          "MateThreatExtension")},
    {Depth<&S::pawnPushExtension>,       "PawnPushExtension:",       spin("PawnPushExtension", 0, 500)},

    {BookFile,                           "OPNBookFile:",             text("BookFile")},
    {Log,                                "CreateLog:",               check("CreateLog")},
    {Switch<&S::logInSingleFile>,        "LogInSingleFile:"},
    {Switch<&S::uniqueLogPerGame>,       "UniqueLogPerGame:"},
    {LogFolder,                          "LogFolder:"},
};
// clang-format on

/// Compares two names, either of which may be missing.
constexpr bool same(const char* one, const char* other) {
    return one != nullptr && other != nullptr && std::string_view(one) == other;
}

/// Each row has a rule for each place it can be set from, and no name occurs twice.
constexpr bool isSound(std::span<const Setting> table) {
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto& [rule, key, option] = table[i];
        if (key != nullptr && rule.fromFile == nullptr) return false;
        if (option.name != nullptr && (rule.fromOption == nullptr || rule.show == nullptr)) {
            return false;
        }
        for (const Setting& other : table.subspan(i + 1)) {
            if (same(key, other.key)) return false;
            if (same(option.nameToSet(), other.option.nameToSet())) return false;
        }
    }
    return true;
}
static_assert(isSound(Table));

}  // namespace

std::span<const Setting> settingsTable() { return Table; }

}  // namespace brivok
