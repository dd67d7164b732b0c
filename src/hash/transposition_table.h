#pragma once

#include <cstdint>

#include "board/board.h"
#include "hash/zeroed_array.h"

namespace brivok {

/// What a stored score says about the true one.
enum Bound : std::uint32_t { BoundUpper = 1, BoundLower = 2, BoundExact = 3 };

/// A score above this, or below its negative, is a mate at a known distance.
inline constexpr int MateBound = 32267;

/// The main hash table of the search: buckets of a depth-preferred slot, valid for one search, and
/// an always-replace slot. Mate scores are kept relative to the stored position.
class TranspositionTable {
public:
    /// Result of probe(): the position is not there, a usable bound, or an entry too shallow to cut
    /// off.
    enum class Probe { None = 0, Upper = 1, Lower = 2, Exact = 3, TooShallow = 4 };

    /// What an entry gives besides its bound.
    struct Found {
        Move move = NoMove;       ///< the best one, or none
        int score = 0;            ///< from the probing node; unset unless a bound was returned
        bool mateThreat = false;  ///< a null move was answered by mate
    };

    /// Makes the table anew, empty, by the setting `hashMB`. Ends the program with code 1 when the
    /// memory is refused.
    void resize();

    /// Looks the key up for a node at `searchPly` that wants `depth` (units of 1/16 ply). Clears
    /// `allowNull` when an upper bound below `beta`, at most three plies shallower, shows that a
    /// null move would not reach it.
    Probe probe(std::uint64_t key, int searchPly, int beta, int depth, Found& found,
                bool& allowNull);

    /// Keeps what a node at `searchPly` has found with `depth` (units of 1/16 ply): in the slot
    /// that prefers depth, unless this search has a deeper entry there.
    void store(std::uint64_t key, int searchPly, int score, Bound bound, Move move, bool mateThreat,
               int depth);

    /// Asks the processor to have the bucket of a key at hand soon.
    void prefetch(std::uint64_t key) const { __builtin_prefetch(&bucketOf(key)); }

    /// The move kept for the position by this or an earlier search, if it can be played; else 0.
    [[nodiscard]] Move bestMove(const Board& board) const;

    /// Forgets all positions; the generation stays.
    void clear();

    /// Starts the generation of a new search: 1 to 7, then 1 again.
    void nextGeneration();

    /// Share of slots taken by the present search, in thousandths.
    [[nodiscard]] int fillPermille() const;

    /// The number of buckets.
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

    [[nodiscard]] Bucket& bucketOf(std::uint64_t key) {
        return buckets[static_cast<std::uint32_t>(key) & (bucketCount - 1)];
    }
    [[nodiscard]] const Bucket& bucketOf(std::uint64_t key) const {
        return buckets[static_cast<std::uint32_t>(key) & (bucketCount - 1)];
    }

    ZeroedArray<Bucket> buckets;
    std::uint32_t bucketCount = 0;  ///< a power of two
    std::uint32_t generation = 0;   ///< 1 to 7 while searching, 0 before the first search
    std::uint32_t alwaysSlotsUsed = 0;
    std::uint32_t slotsOfGeneration[8]{};  ///< depth-preferred slots by generation; 0 is not used
};

/// The one of the engine.
extern TranspositionTable transpositionTable;

}  // namespace brivok
