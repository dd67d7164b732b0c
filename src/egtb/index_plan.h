#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "egtb/enumeration.h"
#include "egtb/square_word.h"

/// @file
/// How the index of a table is put together, worked out once from its signature.
///
/// The men of a position lie in a SquareWord: first the kings, then the men in the order in which
/// they are numbered. Two bytes are kept for the squares of an en-passant capture. An index is a
/// sum of digits with weights: the highest numbers the kings together with the men of the side to
/// move, each further one the men of one type of the other side.
namespace brivok {

inline constexpr unsigned OtherKingByte = 0;   ///< of the king of the side that is not to move
inline constexpr unsigned MoverKingByte = 1;   ///< of the king of the side to move
inline constexpr unsigned FirstManByte = 2;    ///< of the first man that is no king
inline constexpr unsigned EnPassantByte = 6;   ///< the square that the capturing pawn goes to
inline constexpr unsigned PawnOriginByte = 7;  ///< the square that the captured pawn came from

inline constexpr std::size_t MaxMen = 4;  ///< besides the kings

/// The captures en passant: seven towards the a-file, by the file of the square that the pawn goes
/// to, then seven towards the h-file.
inline constexpr unsigned EnPassantCases = 14;
inline constexpr unsigned CasesTowardsA = 7;  ///< the first seven

/// Men of one type and side, in neighbouring bytes.
struct MenRun {
    ManType type{};          ///< of all of them
    std::uint8_t count = 0;  ///< how many; 0 for none at all
    std::uint8_t byte = 0;   ///< of the first
};

/// Kings and the men numbered with them, by the enumeration tables.
struct GroupDigit {
    std::array<MenRun, 3> runs{};          ///< the first `runCount` are in use
    std::size_t runCount = 0;              ///< runs that are numbered with the kings
    const KingPairs* pairs = nullptr;      ///< the placements of the kings
    const std::uint32_t* start = nullptr;  ///< placements with all earlier pairs, and their total
    std::uint64_t weight = 0;              ///< of the digit in the index
    std::uint8_t flip = 0;                 ///< of kings and men while they are numbered
};

/// Men numbered on the squares that others leave free.
struct MenDigit {
    MenRun run;                ///< the men
    std::uint8_t lowest = 0;   ///< square: pawns count from the second rank
    SquareWord padding = 0;    ///< or-ed with the position it leaves the men placed before
    std::uint64_t radix = 0;   ///< how many values the digit has
    std::uint64_t weight = 0;  ///< of the digit in the index
};

/// The numbering of the plain positions of a table, or of those with an en-passant capture.
struct IndexSection {
    GroupDigit group;                  ///< the highest digit
    std::array<MenDigit, 3> digits{};  ///< in the order in which the men are placed
    std::size_t digitCount = 0;        ///< digits in use
    std::uint64_t count = 0;           ///< one past the highest index
};

/// All that tableIndex() and tablePosition() need to know of one side of a table.
struct IndexPlan {
    /// Where a byte of the position comes from.
    struct Slot {
        bool isMovers = false;  ///< from the list of the side to move, else from the other
        std::uint8_t slot = 0;  ///< in the PieceList
    };

    std::array<Slot, MaxMen> men{};  ///< by byte, from FirstManByte
    std::size_t menCount = 0;        ///< men that are no kings
    bool hasPawns = false;           ///< either side has some
    bool hasEnPassant = false;       ///< positions with an en-passant capture exist
    std::uint8_t rankFlip = 0;       ///< of the whole position, before all else
    SquareWord pawnBytes = 0;        ///< 1 in the bytes of pawns
    MenRun moverPawns;               ///< pawns of the side to move
    MenRun otherPawns;               ///< pawns of the other side
    bool moverGoesUp = true;         ///< its pawns do, from rank to higher rank
    IndexSection plain;              ///< without a capture
    IndexSection enPassant;          ///< with one, counted from 0
};

/// The squares of an en-passant capture on `file`: a pawn beside `taken` goes to `target`.
struct EnPassantSquares {
    /// `file` is 0 to 7.
    EnPassantSquares(const IndexPlan& plan, unsigned file)
        : target((plan.moverGoesUp ? 5U : 2U) * 8 + file),
          taken(plan.moverGoesUp ? target - 8 : target + 8),
          origin(plan.moverGoesUp ? target + 8 : target - 8) {}

    unsigned target;  ///< where the capturing pawn goes to
    unsigned taken;   ///< where the pawn taken stands
    unsigned origin;  ///< of the pawn taken
};

/// The plan of table `id` (0 .. 440) with `side` to move. The first call makes all plans.
[[nodiscard]] const IndexPlan& indexPlan(int id, int side);

}  // namespace brivok
