#pragma once

#include <cstdint>

#include "board/board.h"
#include "hash/zeroed_array.h"

namespace brivok {

/// What a stored score says about the true one.
enum Bound : std::uint32_t { BoundUpper = 1, BoundLower = 2, BoundExact = 3 };

/// Scores above this, or below its negative, are mates at a known distance.
inline constexpr int MateBound = 32267;

/// The main hash table of the search. A bucket has a depth-preferred slot, valid for one search,
/// and an always-replace slot. Mate scores are stored relative to the stored position.
class TranspositionTable {
public:
    /// Result of probe(): position not found, a usable bound, or an entry too shallow to cut off.
    enum class Probe { None = 0, Upper = 1, Lower = 2, Exact = 3, TooShallow = 4 };

    /// What an entry gives apart from its bound.
    struct Found {
        Move move = NoMove;  ///< best move, or NoMove
        /// From the probing node's view; unset unless a bound was returned.
        int score = 0;
        bool mateThreat = false;  ///< whether a null move was answered by mate
    };

    /// Replaces the table by an empty one of the size in `hashMB`. Ends the program with code 1 if
    /// memory is refused.
    void resize();

    /// Looks up the key for a node at `searchPly` that needs `depth` (1/16 ply). Clears `allowNull`
    /// if an upper bound below `beta`, at most three plies shallower, shows that a null move would
    /// fail.
    Probe probe(std::uint64_t key, int searchPly, int beta, int depth, Found& found,
                bool& allowNull);

    /// Stores the result of a node at `searchPly` searched to `depth` (1/16 ply): in the
    /// depth-preferred slot unless this search has a deeper entry there.
    void store(std::uint64_t key, int searchPly, int score, Bound bound, Move move, bool mateThreat,
               int depth);

    void prefetch(std::uint64_t key) const { __builtin_prefetch(&bucketOf(key)); }

    /// The move stored for the position by this or an earlier search, or NoMove if there is none
    /// that can be played.
    [[nodiscard]] Move bestMove(const Board& board) const;

    /// Clears all entries but keeps the generation.
    void clear();

    /// Starts a new search's generation: 1 to 7, then 1 again.
    void nextGeneration();

    /// Share of slots filled by the current search, in thousandths.
    [[nodiscard]] unsigned fillPermille() const;

    [[nodiscard]] std::uint32_t size() const { return bucketCount; }

private:
    struct alignas(32) Bucket {
        std::uint64_t deepKey;
        std::uint64_t alwaysKey;
        Move deepMove;
        std::uint32_t deepInfo;
        Move alwaysMove;
        std::uint32_t alwaysInfo;
    };
    static_assert(sizeof(Bucket) == 32);

    [[nodiscard]] Bucket& bucketOf(std::uint64_t key) { return buckets[key & (bucketCount - 1)]; }
    [[nodiscard]] const Bucket& bucketOf(std::uint64_t key) const {
        return buckets[key & (bucketCount - 1)];
    }

    /// Counts no slot as used.
    void forgetFill();

    ZeroedArray<Bucket> buckets;
    std::uint32_t bucketCount = 0;  ///< a power of two
    std::uint32_t generation = 0;   ///< 1 to 7 while searching, 0 before the first search
    std::uint32_t alwaysSlotsUsed = 0;
    /// Depth-preferred slots by generation; entry 0 is unused.
    std::uint32_t slotsOfGeneration[8]{};
};

extern TranspositionTable transpositionTable;

}  // namespace brivok
