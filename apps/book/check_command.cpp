#include <algorithm>
#include <cstdio>
#include <vector>

#include "board/board.h"
#include "book_file.h"
#include "commands.h"
#include "movegen/generate.h"
#include "movegen/legal_moves.h"

namespace brivok {

namespace {

/// Finds the records that can be reached from the start position by book moves. Goes through them
/// breadth first and keeps for each the move that found it, so that its line can be replayed.
class Reach {
public:
    explicit Reach(std::vector<std::uint64_t> sortedKeys)
        : keys(std::move(sortedKeys)), steps(keys.size()) {}

    /// Returns the number of records found. Leaves the start position on the board.
    std::uint64_t walk(Board& board) {
        board.NewGame();
        lookAround(board, Start);
        // The list grows during the loop.
        std::size_t next = 0;
        while (next < found.size()) {
            const Index record = found[next++];
            playWayTo(board, record);
            if (board.ply < MaxBookPlies) lookAround(board, record);
            while (board.ply > 0) board.unmakeMove();
        }
        return found.size();
    }

private:
    using Index = std::uint32_t;
    static constexpr Index Start = ~Index{0};

    struct Step {
        Index from = Start;
        Move move = NoMove;  ///< NoMove until the record is found
    };

    void playWayTo(Board& board, Index record) {
        way.clear();
        for (Index at = record; at != Start; at = steps[at].from) way.push_back(steps[at].move);
        for (; !way.empty(); way.pop_back()) board.makeMove(way.back());
    }

    /// Finds the records after the current position, which is that of a record or the start.
    void lookAround(Board& board, Index from) {
        forEachLegalMove(board, [&](Move move) { enter(board.hashKey, {from, move}); });
    }

    void enter(std::uint64_t key, Step step) {
        const auto place = std::ranges::lower_bound(keys, key);
        if (place == keys.end() || *place != key) return;
        const auto index = static_cast<Index>(place - keys.begin());
        if (steps[index].move != NoMove) return;
        steps[index] = step;
        found.push_back(index);
    }

    std::vector<std::uint64_t> keys;
    std::vector<Step> steps;   ///< by record
    std::vector<Index> found;  ///< in the order of finding
    std::vector<Move> way;     ///< in reverse
};

}  // namespace

void checkBook(const std::string& book, bool walk) {
    BookReader reader(book);
    std::vector<std::uint64_t> keys;
    std::uint64_t games = 0;
    std::uint64_t most = 0;
    for (BookRecord record; reader.next(record);) {
        keys.push_back(record.key);
        games += gamesOf(record);
        most = std::max(most, gamesOf(record));
    }

    const auto print = [](std::uint64_t value, const char* text) {
        std::printf("%12llu %s\n", static_cast<unsigned long long>(value), text);
    };
    std::printf("%s is a sound book\n", book.c_str());
    print(reader.recordCount(), "records");
    if (walk) {
        Reach reach(std::move(keys));
        print(reach.walk(theBoard), "of them reachable from the start position by book moves");
    }
    print(games, "games in all records");
    print(most, "games in the largest record");
}

}  // namespace brivok
