#pragma once

#include <cstdint>
#include <limits>
#include <utility>

#include "movegen/generate.h"

namespace brivok {

/// The moves of a node, handed out by falling ordering score; among equals the earlier in the list
/// comes first. Two things make that cheap:
///
/// A capture or promotion is ordered by its exchange value (Board::see()), which takes longer than
/// all else that a node knows about a move. So it starts with an upper bound, and the value itself
/// is computed only if the move comes to the top and might not stay there.
///
/// Most nodes end with one of their first moves: good captures, killers, the move of the hash
/// table. So these, by their score, are picked one by one, and the rest is sorted when its turn
/// comes.
class OrderedMoves {
public:
    /// Added to the exchange value of a capture or promotion that does not lose material.
    static constexpr int GoodCapture = 10'000'000;

    MoveList moves;  ///< as generated
    int count = 0;   ///< number of moves

    /// Forgets all scores and begins again.
    void restart() {
        scored = picked = ready = 0;
        sorted = false;
    }

    /// Scores the next move of the list, one call for each in their order: a quiet move by `extra`
    /// alone, a capture or promotion by its exchange value on top.
    void score(const Board& board, int extra) {
        const Move move = moves[scored];
        if (moveCapture(move) == Empty && movePromotion(move) == Empty) {
            append(keyOf(extra, scored, false));
        } else {
            append(boundOfCapture(board, move, extra));
        }
    }

    /// Picks the next move; NoMove if none is left. The board is the one that the list is for.
    Move next(const Board& board);

    /// The same, but NoMove if no move that is left reaches ReadyScore. Of a list of captures and
    /// promotions only losing ones are left then.
    Move nextReady(const Board& board);
    static constexpr int ReadyScore = 5'000'000;

    /// Number of moves not picked yet.
    [[nodiscard]] int left() const { return scored - picked; }

    /// Place in the list of the move picked last.
    [[nodiscard]] int index() const { return indexOf(keys[picked - 1]); }
    /// Whether the capture or promotion picked last loses material.
    [[nodiscard]] bool losesMaterial() const { return upperBounds[index()] < 0; }
    /// Exchange value of the capture or promotion picked last.
    [[nodiscard]] int see(const Board& board) const;

private:
    /// The score, the place in the list, and whether the score is but an upper bound, in one number
    /// that is larger for the move to be picked first.
    using Key = std::int64_t;
    static constexpr unsigned IndexBits = 9;
    static constexpr Key LastIndex = (1 << IndexBits) - 1;
    static_assert(MaxMoves <= LastIndex);

    static constexpr Key keyOf(int order, int index, bool bound) {
        return Key{order} * (2 << IndexBits) + (LastIndex - index) * 2 + Key{bound};
    }
    static constexpr int orderOf(Key key) { return static_cast<int>(key >> (IndexBits + 1)); }
    static constexpr int indexOf(Key key) {
        return static_cast<int>(LastIndex - (key >> 1 & LastIndex));
    }
    static constexpr bool isBound(Key key) { return (key & 1) != 0; }

    /// What an exchange value adds to the ordering score.
    static constexpr int orderBySee(int see) { return see >= 0 ? see + GoodCapture : see; }

    static constexpr Key ReadyKey = Key{ReadyScore} * (2 << IndexBits);

    void append(Key key) {
        keys[scored] = key;
        if (key >= ReadyKey) std::swap(keys[scored], keys[ready++]);
        ++scored;
    }
    [[nodiscard]] Key boundOfCapture(const Board& board, Move move, int extra);

    Key bringBestForward();
    [[nodiscard]] Key secondOfSorted() const {
        return picked + 1 < ready ? keys[picked + 1] : std::numeric_limits<Key>::min();
    }
    [[nodiscard]] bool staysFirst(const Board& board, Key key, Key second) const;
    [[nodiscard]] Key lowered(const Board& board, Key key);
    void lowerFirst(const Board& board);

    // The keys of the moves picked, of those that are ready, and of the others, in this order.
    int picked = 0;
    int ready = 0;        ///< end of those of at least ReadyScore
    int scored = 0;       ///< end of the others
    bool sorted = false;  ///< whether the others have been sorted, and now count as ready
    Key keys[MaxMoves];
    int upperBounds[MaxMoves];  ///< of the exchange value, by place in the list
};

}  // namespace brivok
