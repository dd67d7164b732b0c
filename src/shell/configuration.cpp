#include "shell/configuration.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <type_traits>

#include "board/piece_values.h"
#include "shell/base/settings.h"
#include "shell/base/words.h"

namespace brivok {

namespace {

constexpr char FileName[] = "brivok.ini";

/// A line of this length or more ends the reading.
constexpr std::size_t LongestLine = 4096;

// The rules. Numbers are cut to the width of their setting and held against no range: who writes
// the file is believed.

template <auto Field>
void integer(const std::string& value) {
    auto& setting = settings.*Field;
    setting = static_cast<std::remove_reference_t<decltype(setting)>>(parseInteger(value));
}

template <std::int16_t Settings::*Field>
void pieceValueOf(const std::string& value) {
    integer<Field>(value);
    RefreshPieceValues();
}

template <std::int16_t Settings::*Field>
void percent(const std::string& value) {
    settings.*Field = unitsFromPercent(parseInteger(value));
}

/// The size of a hash table, which is never 0.
template <std::uint32_t Settings::*Field>
void tableSize(const std::string& value) {
    const auto megabytes = static_cast<std::uint32_t>(parseInteger(value));
    if (megabytes != 0) settings.*Field = megabytes;
}

template <std::uint32_t Settings::*Field>
void megabytesInBytes(const std::string& value) {
    settings.*Field = static_cast<std::uint32_t>(parseInteger(value)) * Megabyte;
}

template <bool Settings::*Field>
void boolean(const std::string& value) {
    settings.*Field = lowerCase(value) == "true";
}

template <std::string Settings::*Field>
void text(const std::string& value) {
    settings.*Field = value;
}

template <std::string Settings::*Field>
void lowerCaseText(const std::string& value) {
    settings.*Field = lowerCase(value);
}

/// Not the names that the protocols have for the variants.
void variantName(const std::string& value) {
    const std::string name = lowerCase(value);
    settings.variant = name == "frc"        ? Variant::Fischerandom
                       : name == "nocastle" ? Variant::NoCastle
                                            : Variant::Normal;
}

struct Key {
    const char* name;
    void (*set)(const std::string& value);
};

constexpr Key Keys[] = {
    {"HashMB:", tableSize<&Settings::hashMB>},
    {"PHashMB:", tableSize<&Settings::PHashMB>},
    {"EHashMB:", tableSize<&Settings::EHashMB>},
    {"EGTBCacheMB:", megabytesInBytes<&Settings::EGTBCacheBytes>},
    {"OPNBookFile:", lowerCaseText<&Settings::bookFileName>},
    {"Resign:", boolean<&Settings::resignEnabled>},
    {"CreateLog:", boolean<&Settings::createLog>},
    {"LogInSingleFile:", boolean<&Settings::logInSingleFile>},
    {"UniqueLogPerGame:", boolean<&Settings::uniqueLogPerGame>},
    {"OpeningsBook:", boolean<&Settings::bookEnabled>},
    {"ExtraInfo:", boolean<&Settings::extraInfo>},
    {"LazyEval:", boolean<&Settings::lazyEvalEnabled>},
    {"NullMove:", boolean<&Settings::useNullMove>},
    {"Futility:", boolean<&Settings::useFutility>},
    {"DeltaPrune:", boolean<&Settings::useDeltaPruning>},
    {"IID:", boolean<&Settings::useIid>},
    {"LogFolder:", text<&Settings::logFolder>},
    {"EGTBDir:", text<&Settings::egtbDir>},
    {"AspirationWindow:", integer<&Settings::aspirationWindow>},
    {"ResignValue:", integer<&Settings::resignValue>},
    {"NullMoveMin:", percent<&Settings::nullMoveMin>},
    {"NullMoveMax:", percent<&Settings::nullMoveMax>},
    {"CheckExtension:", percent<&Settings::checkExtension>},
    {"RecapExtension:", percent<&Settings::recaptureExtension>},
    {"SingleRepCheckExtension:", percent<&Settings::oneReplyExtension>},
    {"MateThreatExtension:", percent<&Settings::mateThreatExtension>},
    {"PawnPushExtension:", percent<&Settings::pawnPushExtension>},
    {"PawnValue:", pieceValueOf<&Settings::PawnValue>},
    {"KnightValue:", pieceValueOf<&Settings::KnightValue>},
    {"BishopValue:", pieceValueOf<&Settings::BishopValue>},
    {"RookValue:", pieceValueOf<&Settings::RookValue>},
    {"QueenValue:", pieceValueOf<&Settings::QueenValue>},
    {"Variant:", variantName},
};

/// Comments and section heads need no test of their own: no key begins as they do.
void readLine(const std::string& line) {
    std::istringstream words(line);
    std::string name;
    std::string value;
    if (!(words >> name >> value)) return;
    for (const Key& key : Keys) {
        if (name == key.name) return key.set(value);
    }
}

}  // namespace

void ReadConfiguration() {
    std::ifstream file(FileName);
    // Room for the longest line taken, the carriage return of another system and the end mark.
    std::array<char, LongestLine + 1> room;
    while (file.getline(room.data(), room.size())) {
        std::string line = room.data();
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() >= LongestLine) return;
        readLine(line);
    }
}

}  // namespace brivok
