// Every folder above src/platform may include this.
#pragma once

#include <cstdint>
#include <string>

namespace brivok {

/// The rules of the game in force.
enum class Variant : std::uint32_t { Normal = 0, Fischerandom = 1, NoCastle = 2 };

/// A depth setting of `percent` hundredths of a ply, in units of 1/16 ply, truncated.
[[nodiscard]] constexpr std::int16_t unitsFromPercent(std::int64_t percent) {
    return static_cast<std::int16_t>(percent * 16 / 100);
}

/// The reverse of unitsFromPercent(), for display.
[[nodiscard]] constexpr int percentFromUnits(std::int16_t units) { return units * 100 / 16; }

inline constexpr std::uint32_t Megabyte = 1U << 20U;  ///< bytes

/// Every tunable value of the engine with its compiled default. The users read a value at each
/// use, and nobody is told of a change; who writes one refreshes what is derived from it.
/// Depth-valued settings are in units of 1/16 ply, scores in centipawns.
struct Settings {
    Variant variant = Variant::Normal;  ///< rules of the game

    std::uint32_t hashMB = 1;   ///< main hash, megabytes
    std::uint32_t PHashMB = 1;  ///< pawn hash, megabytes
    std::uint32_t EHashMB = 1;  ///< evaluation hash, megabytes

    std::uint32_t EGTBCacheBytes = Megabyte;  ///< cache of the endgame tables, bytes
    std::string egtbDir;                      ///< directories of the endgame tables
    std::string bookFileName = "libro.bin";   ///< of the opening book
    bool bookEnabled = true;                  ///< play from the book

    bool resignEnabled = true;        ///< give hopeless games up
    std::int32_t resignValue = -850;  ///< at or below it a move counts towards resigning

    bool createLog = false;           ///< keep a log
    bool logInSingleFile = false;     ///< append to one file, else a file for each run
    bool uniqueLogPerGame = false;    ///< read and stored; a run has one log
    std::string logFolder = "logs/";  ///< joined with the file name as it stands
    bool extraInfo = true;            ///< face and bracket of the thinking line

    bool lazyEvalEnabled = false;  ///< stop an evaluation that is far outside the window
    bool useNullMove = true;       ///< null-move pruning
    bool useFutility = false;      ///< futility pruning in the main search
    bool useDeltaPruning = false;  ///< delta pruning in the quiescence search
    bool useIid = true;            ///< internal iterative deepening

    std::int16_t aspirationWindow = 35;         ///< half the width at the root, centipawns
    std::int16_t nullMoveMin = 32;              ///< reduction of a null move
    std::int16_t nullMoveMax = 48;              ///< reduction of a deep null move
    std::int16_t checkExtension = 16;           ///< of a move that gives check
    std::int16_t recaptureExtension = 12;       ///< of a move that takes back
    std::int16_t oneReplyExtension = 12;        ///< of the only reply to a check
    std::int16_t mateThreatExtension = 12;      ///< where a null move is answered by mate
    std::int16_t pawnPushExtension = 12;        ///< of a pawn's push to the seventh rank
    std::int16_t endgameCaptureExtension = 24;  ///< of a capture that leads to a pawn endgame

    std::int16_t PawnValue = 100;    ///< centipawns
    std::int16_t KnightValue = 300;  ///< centipawns
    std::int16_t BishopValue = 300;  ///< centipawns
    std::int16_t RookValue = 500;    ///< centipawns
    std::int16_t QueenValue = 900;   ///< centipawns

    /// All values are equal.
    bool operator==(const Settings&) const = default;
};

/// The one set of settings of the process.
inline Settings settings;

}  // namespace brivok
