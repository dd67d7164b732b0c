#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "egtb/enumeration.h"
#include "egtb/square_word.h"

/// @file
/// How the index of a table is composed; derived once from the table's signature.
///
/// A position is held in a SquareWord: first the kings, then the men in the order in which they are
/// numbered. Two bytes are reserved for the squares of an en passant capture. An index is a sum of
/// weighted digits: the highest numbers the kings together with the men of the side to move, each
/// of the others the men of one type of the other side.
namespace brivok {

inline constexpr unsigned OtherKingByte = 0;   ///< king of the side not to move
inline constexpr unsigned MoverKingByte = 1;   ///< king of the side to move
inline constexpr unsigned FirstManByte = 2;    ///< first man other than a king
inline constexpr unsigned EnPassantByte = 6;   ///< target square of the capturing pawn
inline constexpr unsigned PawnOriginByte = 7;  ///< square where the captured pawn started

inline constexpr std::size_t MaxMen = 4;  ///< besides the kings

/// The en passant captures: seven towards the a-file, by file of the target square, then seven
/// towards the h-file.
inline constexpr unsigned EnPassantCases = 14;
inline constexpr unsigned CasesTowardsA = 7;

/// Men of one type and side, in adjacent bytes.
struct MenRun {
    ManType type{};
    std::uint8_t count = 0;  ///< 0 for an unused run
    std::uint8_t byte = 0;   ///< the first byte
};

/// The kings and the men numbered with them, by enumeration tables.
struct GroupDigit {
    std::array<MenRun, 3> runs{};      ///< the first `runCount` are in use
    std::size_t runCount = 0;          ///< runs numbered with the kings
    const KingPairs* pairs = nullptr;  ///< placements of the kings
    /// Number of placements for all earlier pairs, then the total.
    const std::uint32_t* start = nullptr;
    std::uint64_t weight = 0;  ///< weight of the digit in the index
    std::uint8_t flip = 0;     ///< applied to kings and men for numbering
};

/// Men numbered on the squares that others leave free.
struct MenDigit {
    MenRun run;
    std::uint8_t lowest = 0;   ///< lowest square: pawns start on the second rank
    SquareWord padding = 0;    ///< ORed with the position, leaves only the men placed before
    std::uint64_t radix = 0;   ///< number of values of the digit
    std::uint64_t weight = 0;  ///< weight of the digit in the index
};

/// The numbering of a table's plain positions, or of those with an en passant capture.
struct IndexSection {
    GroupDigit group;                  ///< the highest digit
    std::array<MenDigit, 3> digits{};  ///< in the order of placement
    std::size_t digitCount = 0;
    std::uint64_t count = 0;  ///< one more than the highest index
};

/// What tableIndex() and tablePosition() require about one side of a table.
struct IndexPlan {
    /// Where a byte of the position comes from.
    struct Slot {
        bool isMovers = false;  ///< from the list of the side to move, not from the other list
        std::uint8_t slot = 0;  ///< index in the PieceList
    };

    std::array<Slot, MaxMen> men{};  ///< by byte, from FirstManByte
    unsigned menCount = 0;           ///< men other than kings
    bool hasPawns = false;           ///< of either side
    bool hasEnPassant = false;       ///< whether the table has positions with an en passant capture
    std::uint8_t rankFlip = 0;       ///< of the whole position, applied first
    SquareWord pawnBytes = 0;        ///< 1 in each byte of a pawn
    MenRun moverPawns;
    MenRun otherPawns;
    bool moverGoesUp = true;  ///< whether the mover's pawns move towards higher ranks
    IndexSection plain;
    IndexSection enPassant;  ///< indices start at 0 again
};

/// The squares of an en passant capture on `file`: a pawn next to `taken` goes to `target`.
struct EnPassantSquares {
    /// `file` is 0 to 7.
    EnPassantSquares(const IndexPlan& plan, unsigned file)
        : target((plan.moverGoesUp ? 5U : 2U) * 8 + file),
          taken(plan.moverGoesUp ? target - 8 : target + 8),
          origin(plan.moverGoesUp ? target + 8 : target - 8) {}

    unsigned target;  ///< target square of the capturing pawn
    unsigned taken;   ///< square of the captured pawn
    unsigned origin;  ///< where the captured pawn started
};

/// The plan of table `id` (0 to 440) with `side` to move. The first call builds all plans.
[[nodiscard]] const IndexPlan& indexPlan(int id, unsigned side);

}  // namespace brivok
