// All folders above src/platform may include this.
#pragma once

#include <cstdint>
#include <string>

namespace brivok {

enum class Variant : std::uint32_t { Normal = 0, Fischerandom = 1, NoCastle = 2 };

/// Converts a depth setting from hundredths of a ply to units of 1/16 ply, truncating.
[[nodiscard]] constexpr std::int16_t unitsFromPercent(std::int64_t percent) {
    return static_cast<std::int16_t>(percent * 16 / 100);
}

/// The inverse of unitsFromPercent(), for display.
[[nodiscard]] constexpr int percentFromUnits(std::int16_t units) { return units * 100 / 16; }

inline constexpr std::uint32_t Megabyte = 1U << 20U;  ///< bytes

/// Every tunable value of the engine, with its default. Values are read at each use and nobody is
/// notified of a change, so whoever writes a value refreshes what is derived from it. Depths are in
/// units of 1/16 ply, scores in centipawns.
struct Settings {
    /// Speak the protocols as modern interfaces expect them. Read once, when the program starts.
    bool modernInterface = false;

    Variant variant = Variant::Normal;

    std::uint32_t hashMB = 1;   ///< main hash, megabytes
    std::uint32_t PHashMB = 1;  ///< pawn hash, megabytes
    std::uint32_t EHashMB = 1;  ///< evaluation hash, megabytes

    std::uint32_t EGTBCacheBytes = Megabyte;  ///< cache of the endgame tables, bytes
    std::string egtbDir;                      ///< directories of the endgame tables
    std::string bookFileName = "libro.bin";
    bool bookEnabled = true;  ///< whether to play from the book

    bool resignEnabled = true;        ///< whether to resign hopeless games
    std::int32_t resignValue = -850;  ///< a score at or below this counts towards resigning

    bool createLog = false;           ///< whether to keep a log
    bool logInSingleFile = false;     ///< append to one file instead of one file per run
    bool uniqueLogPerGame = false;    ///< stored but unused: a run has one log
    std::string logFolder = "logs/";  ///< prefix of the log's file name
    /// Show the face and the bracketed extra information in thinking lines.
    bool extraInfo = true;

    bool lazyEvalEnabled = false;  ///< stop an evaluation that is far outside the window
    bool useNullMove = true;
    bool useFutility = false;      ///< in the main search
    bool useDeltaPruning = false;  ///< in quiescence
    bool useIid = true;            ///< internal iterative deepening

    std::int16_t aspirationWindow = 35;  ///< half the width at the root, centipawns
    std::int16_t nullMoveMin = 32;       ///< reduction of a shallow null move
    std::int16_t nullMoveMax = 48;       ///< reduction of a deep null move
    std::int16_t checkExtension = 16;    ///< for giving check
    std::int16_t recaptureExtension = 12;
    std::int16_t oneReplyExtension = 12;        ///< for the only reply to a check
    std::int16_t mateThreatExtension = 12;      ///< when a null move is answered by mate
    std::int16_t pawnPushExtension = 12;        ///< for a pawn push to the seventh rank
    std::int16_t endgameCaptureExtension = 24;  ///< for a capture that leads to a pawn endgame

    std::int16_t PawnValue = 100;
    std::int16_t KnightValue = 300;
    std::int16_t BishopValue = 300;
    std::int16_t RookValue = 500;
    std::int16_t QueenValue = 900;

    bool operator==(const Settings&) const = default;
};

inline Settings settings;

}  // namespace brivok
